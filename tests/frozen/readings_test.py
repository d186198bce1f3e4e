# SPDX-License-Identifier: GPL-3.0-or-later
"""Reads the frozen files once more, with nothing of the program's own code, and holds what it has
read against the readings beside them. So a reading is not only what the program once said."""

import decimal
import hashlib
import pathlib
import re
import sys
import unittest
import urllib.parse

HERE = pathlib.Path(__file__).resolve().parent
D = decimal.Decimal
HEADER = ["COMPANY", "STATION", "CIRCUIT", "MFR", "MODEL", "SN", "COMMENTS", "OPERATOR"]
RESULTS = ["KNEE VOLTAGE", "KNEE CURRENT", "EXCITATION CUR", "EXCITATION VTG", "MEASURED RATIO", "POLARITY",
           "PHASE ANGLE", "NAMEPLATE RATIO", "PERCENT ERROR", "KNEE POINT TYPE"]
KNEES = {1: "IEEE 30 DEGREE TANGENT", 2: "IEEE 45 DEGREE TANGENT"}


def quoted(text):
    """Bytes, as a reading has them; a text is of Latin-1."""
    data = text.encode("latin-1") if isinstance(text, str) else text
    return '"' + "".join(chr(b) if 32 <= b < 127 and b not in b'"\\' else f"\\x{b:02X}" for b in data) + '"'


def short(number):
    return format(number.normalize(), "f")


def rounded(number, places):
    return str(number.quantize(D(1).scaleb(-places), rounding=decimal.ROUND_HALF_UP))


# A record as {"number", "description", "notes", "points", "count", and a text for each of RESULTS}.


def record_lines(record):
    yield f"REC NUMBER: {quoted(record['number'])}"
    yield f"TEST DESCRIPTION: {quoted(record.get('description', ''))}"
    yield f"TEST NOTES: {quoted(record.get('notes', ''))}"
    for current, voltage in record["points"]:
        yield f"POINT: {short(current)} {short(voltage)}"
    yield f"NUMBER OF DATA POINTS: {record['count']}"
    for key in RESULTS:
        yield f"{key}: {quoted(record[key])}"


def header_lines(header, colon):
    for key, text in header:
        yield f"{key}{colon if key in HEADER else ':'} {quoted(text)}"


def value(text, key, trimmed):
    text = text.removeprefix(key + ":").removeprefix(" ")
    return text.strip(" ") if trimmed else text


def record_file(data, group=False):
    """The reading of a record file: its text, cut into headers, records and notes at their first lines."""
    text = data.decode("latin-1")
    notes = []
    if not group and (found := re.search(r"^NOTES:\r\n", text, re.M)):
        notes = [text[found.end() :]]
        text = text[: found.start()]
    lines = []
    for block in re.split(r"^(?=TEST NUMBER: |REC NUMBER:)", text, flags=re.M)[1:]:
        rows = block.split("\r\n")[:-1]
        if block.startswith("TEST NUMBER"):
            lines += header_lines(file_header(rows, group), "")
        else:
            lines += record_lines(file_record(rows, group))
    return lines + [f"NOTES: {quoted(note)}" for note in notes] + ["control characters: 0"]


def file_header(rows, group):
    keys = ["TEST NUMBER", "DATE", "TIME", "# OF SHOTS", *HEADER]
    header = []
    for row in rows:
        key = next((key for key in keys if row.startswith(key + ":")), None)
        if key is None:  # what a comma has cut off the line before
            header[-1] = (header[-1][0], header[-1][1] + ", " + row)
        else:
            header.append((key, value(row, key, group)))
    return header + [(key, "") for key in keys[len(header) :]]


def file_record(rows, group):
    record = {"points": []}
    names = {"REC NUMBER": "number", "TEST DESCRIPTION": "description", "TEST NOTES": "notes",
             "NUMBER OF DATA POINTS": "count", **{key: key for key in RESULTS}}
    for row in rows:
        if point := re.fullmatch(r"CURRENT: ([\d.]+)VOLTAGE: ([\d.]+)", row):
            record["points"].append((D(point[1]), D(point[2])))
            continue
        key = next((key for key in names if row.startswith(key + ":")), None)
        if key is None:  # what a comma has cut off the line before
            record[last] += ", " + row
        else:
            last = names[key]
            record[last] = value(row, key, group or key == "REC NUMBER")
    record["number"] = record["number"].strip(" ")
    record["count"] = int(record["count"])
    return record


def captured(data):
    """The shots of a capture file: (digits, three texts, whether all three lines are whole, end)."""
    text = data.decode("latin-1")
    shots = []
    at = 0
    while found := re.compile(r"^([^\n]*DATA.*?)DONE[^\n]*\n", re.M | re.S).search(text, at):
        digits = re.sub(r"[ \r\n]", "", found[1][4:])
        tail = re.compile(r"([^\n]*)\r\n([^\n]*)\r\n([^\n]*)\r\n(\r\n)?").match(text, found.end())
        shots.append((digits, (tail[1][16:], tail[2][17:].strip(" "), tail[3][15:].strip(" ")), True, tail.end()))
        at = tail.end()
    return shots


def polarity(degrees):
    if 0 <= degrees <= 90 or 270 <= degrees <= 360:
        return "IN PHASE"
    return "OUT OF PHASE" if D("90.1") <= degrees <= D("269.9") else "N/A"


def shot_record(number, shot):
    """The record that a shot becomes: 148 bytes, least significant first, two digits each. A digit
    that is none counts by its place behind 9, or -1."""
    digits, (ratio, nameplate, error), _, _ = shot
    weights = ["0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZ".find(digit) for digit in digits]
    pairs = [weights[i : i + 2] for i in range(0, 2 * 148, 2)]
    byte = [16 * pair[0] + pair[1] if len(pair) == 2 else sum(pair) for pair in pairs]

    def word(offset):
        return D(byte[offset] + 256 * byte[offset + 1])

    amperes, volts = D("0.0002") if byte[147] == 10 else D("0.0001"), D("0.1")
    slots = [(word(4 * slot), word(4 * slot + 2)) for slot in reversed(range(32))]
    points = [(current * amperes, voltage * volts) for current, voltage in slots if current > 0 and voltage > 0]
    degrees = word(140) * D("0.1")
    texts = [f"{short(word(128) * volts)} VOLTS", f"{short(word(130) * amperes)} AMPS",
             f"{rounded(word(132) * amperes, 3)} AMPS", f"{short(word(134) * volts)} VOLTS", ratio,
             polarity(degrees), f"{rounded(degrees, 1)} DEG", nameplate, error,
             KNEES.get(byte[146], "ASA 10%VTG -> 50%CUR")]
    return {"number": str(number), "points": points, "count": len(points), **dict(zip(RESULTS, texts))}


def capture(data):
    lines = []
    shots = captured(data)
    for number, shot in enumerate(shots, 1):
        lines += record_lines(shot_record(number, shot))
        lines += [f"lines behind it: {'whole' if shot[2] else 'not whole'}", f"ends at: {shot[3]}"]
    return lines + [f"shots: {len(shots)}"]


def read_journal(data):
    """A dictionary of texts; None for a journal whose check sum is not that of its lines."""
    body, _, check = data.rpartition(b"CHECK: ")
    if check.decode("latin-1") != hashlib.sha1(body).hexdigest() + "\r\n":
        return None
    rows = body.decode("ascii").split("\r\n")[1:-1]
    return {key: urllib.parse.unquote_to_bytes(text) for key, text in (row.split(": ", 1) for row in rows)}


def journal(data):
    texts = read_journal(data)
    return [
        *(f"{key}: {quoted(texts[key])}" for key in ("DATE", "TIME")),
        *(f"{key} {quoted(texts[key])}" for key in HEADER),
        f"NOTES: {quoted(texts['NOTES'])}",
        f"shots in the capture file: {int(texts['SHOTS'])}",
        f"pending shot: {quoted(texts['PENDING'])}",
        f"saved: {'yes' if texts['SAVED'] == b'1' else 'no'}",
    ]


def header_file(data):
    """A line belongs to the first key of HEADER that is anywhere in it."""
    fields = dict.fromkeys(HEADER, "")
    for row in data.decode("latin-1").split("\r\n"):
        for key in HEADER:
            if key + ":" in row:
                fields[key] = row.split(key + ":", 1)[1]
                break
    return [f"{key} {quoted(text.ljust(20))}" for key, text in fields.items()]


def settings(data):
    text = data.decode("utf-8")

    def stored(key):
        found = re.search(rf"^{re.escape(key)}=(.*)$", text, re.M)[1]
        if found.startswith('"'):
            found = re.sub(r"\\(.)", r"\1", found[1:-1])
        return found

    limits = []
    if "[COMPARE]" in text:
        limits = [f"limit of {what}: {quoted(stored(key + chr(92) + 'LIMIT'))}"
                  for what, key in (("curves", "VOLTAGE"), ("ratios", "RATIO"))]
    sort = stored("SORT\\SORTVAL")
    path = stored("PATH\\PATHVAL")
    return [
        f"kneepoint: {quoted(stored('KPTYPE' + chr(92) + 'KPTYPEVAL').encode())}",
        f"port: {int(stored('COMPORT' + chr(92) + 'COMPORTVAL'))}",
        f"impedance: {'yes' if stored('IMP' + chr(92) + 'IMPVAL') == 'Y' else 'no'}",
        # One character of each, and a minus sign is no number.
        f"sort order: {sort[0].replace('-', '0')}",
        f"sorted by: {sort[-1]}",
        f"data: {quoted(path.encode())}",
        f"reports: {quoted(path.removesuffix('Shots_Data/').encode() + b'Shots_Excel/')}",
        *limits,
    ]


def windows(data):
    values = dict(row.split("=", 1) for row in data.decode("ascii").split("\n") if "=" in row)
    return [f"main window: {values['normalGeometry'].removeprefix('@Rect(').removesuffix(')')}",
            f"maximized: {'yes' if values['maximized'] == 'true' else 'no'}",
            f"error limit: {quoted(values['errorLimit'])}"]


def log(data):
    """A line "12.345678 > 52 44 59  RDY": seconds, direction, bytes, and what of them can be read."""
    lines = []
    for number, row in enumerate(data.decode("ascii").split("\n")[:-1], 1):
        seconds, direction, digits = re.match(r"(\d+\.\d{6}) ([<>])((?: [0-9A-F]{2}){1,16})  ", row).groups()
        micros = int(seconds.replace(".", ""))
        lines.append(f"{number} {micros} {direction} {quoted(bytes.fromhex(digits))}")
    return lines


def nameplates(data):
    heading, *rows = data.decode("latin-1").split("\r\n")[:-1]
    lines = []
    for row in rows:
        serial, *texts = row.split("\t")
        lines.append(f"nameplate of: {quoted(serial)}")
        lines += [f"{field}: {quoted(text)}" for field, text in zip(heading.split("\t")[1:], texts) if text]
    return lines


def curve(data):
    """A maker's curve: two columns of numbers, in whichever order and units the lines above them say."""
    rows = [row for row in re.split(r"\r\n|\n", data.decode("utf-8" if data[:1] == b"\xEF" else "latin-1")) if row.strip()]
    rows = [row.removeprefix("\ufeff").replace('"', "") for row in rows]
    between = next((sign for sign in ";\t" if sign in rows[-1]), ",")
    fields = [row.split(between, 1) for row in rows]
    if between != ",":
        fields = [[text.replace(",", ".") for text in row] for row in fields]
    headings = [row for row in fields if not re.match(r"[-\d]", row[0])]
    units = ["", ""]
    for row in headings:
        for column, text in enumerate(row):
            found = re.search(r"(?<![A-Za-z])([mk]?)(A|V)(?![A-Za-z])", text)
            units[column] = found[0] if found else units[column]
    named = sorted(unit[-1:] for unit in units) == ["A", "V"]
    scales = [{"m": 1e-3, "k": 1e3}.get(unit[:1], 1) for unit in units]
    lines = [f"units: {'named' if named else 'not named'}"]
    for row in fields[len(headings):]:
        values = [format(float(text) * scale, ".15g").upper() for text, scale in zip(row, scales)]
        lines.append("POINT: " + " ".join(reversed(values) if units[0][-1:] == "V" else values))
    return lines


def entry_of(name, rows):
    def cut(row, offset):
        return row.partition(":")[2][offset : offset + 20]

    texts = [f"{key}={cut(row, 1)}" for key, row in zip(HEADER[:6], rows[4:10])]
    return "".join([name.split(".")[0], "!", rows[1][-8:], " ", rows[2][-5:], "TESTS=", rows[3][-2:], *texts,
                    "OPERATOR=", cut(rows[11], 0), "COMMENTS=", cut(rows[10], 0)])


def date_of(entry):
    found = re.match(r"(0[1-9]|1[0-2])/([0-2]\d|3[01])/(\d\d) ", entry.split("!")[1])
    if not found:
        return None
    year = int(found[3])
    return (year + (2000 if year < 30 else 1900), found[1], found[2])


def row_of(entry):
    name, _, rest = entry.partition("!")
    cut = re.search(r"TESTS=(..).*?STATION=(.*?)CIRCUIT=(.*?)MFR=(.*?)MODEL=(.*?)SN=", rest)
    texts = [name, rest[:8], cut[1], *(text.ljust(20) for text in cut.groups()[1:])]
    return "row: " + " ".join(quoted(text) for text in texts)


def directory(data, folder):
    count, *entries = data.decode("latin-1").split("\r\n")[:-1]
    lines = [f"records: {int(count[-3:])}"]
    lines += [f"entry: {quoted(entry)}" for entry in entries] + [row_of(entry) for entry in entries]
    listed, left_out = [], []
    for path in sorted(folder.iterdir()):
        if ".txt" not in path.name.lower():
            continue
        rows = path.read_bytes().decode("latin-1").split("\r\n")[:12]
        if len(rows) < 12:
            left_out.append((path.name, "has fewer than twelve lines"))
        else:
            listed.append((path.name, entry_of(path.name, rows)))
    if len(listed) > 1:
        undated = [name for name, entry in listed if date_of(entry) is None]
        left_out += [(name, "has no date of the form MM/DD/YY") for name in undated]
        listed = [(name, entry) for name, entry in listed if name not in undated]
        listed.sort(key=lambda record: date_of(record[1]), reverse=True)
    lines += [f"listed: {quoted(name)} {quoted(entry)}" for name, entry in listed]
    return lines + [f"not listed: {quoted(name)} {why}" for name, why in sorted(left_out)]


def whole_session(data, texts):
    """The shots of a session that was not set aside yet: those noted, and the pending one unless it
    is there already."""
    shots = captured(data)
    if texts and texts["PENDING"]:
        noted = int(texts["SHOTS"])
        if len(shots) == noted:
            shots = shots[:noted] + captured(texts["PENDING"])
    return shots


def recovered(folder):
    lines = []
    left = []
    for path in sorted(folder.glob("TESTFILE*.txt"), key=lambda path: path.stem):
        running = path.stem == "TESTFILE"
        log = path.with_suffix(".jnl")
        texts = read_journal(log.read_bytes()) if log.exists() else None
        if texts and texts["SAVED"] == b"1":
            continue
        shots = whole_session(path.read_bytes(), texts if running else None)
        if not shots:
            left += [log.name, path.name]
            continue
        when = re.match(r"TESTFILE-(\d{4})(\d\d)(\d\d)-(\d\d)(\d\d)(\d\d)(?:-(\d+))?", path.stem)
        day, number = ("2026-11-22 10:15:30", 1)
        if when:
            day, number = ("{}-{}-{} {}:{}:{}".format(*when.groups()), int(when[7] or 1))
        lines += [f"session of {day}", f"number: {number}", f"shots: {len(shots)}"]
        text = {key: bytes((texts or {}).get(key, b"")) for key in ("DATE", "TIME", "NOTES", *HEADER)}
        lines += header_lines([("TEST NUMBER", "Recovered"), ("DATE", text["DATE"]), ("TIME", text["TIME"]),
                               ("# OF SHOTS", f"{len(shots):02}"), *((key, text[key]) for key in HEADER)], "")
        for at, shot in enumerate(shots, 1):
            lines += record_lines(shot_record(at, shot))
        if text["NOTES"]:
            lines.append(f"NOTES: {quoted(text['NOTES'] + bytes([13, 10]))}")
        lines.append("control characters: 0")
    return lines + ["left: " + ", ".join(left)]


def reading(path):
    data = path.read_bytes()
    if path.name == "DIRDNLD.DNL":
        return directory(data, path.parent)
    if path.name == "Davo.ini":
        return header_file(data)
    if path.name == "davo.ini":
        return settings(data)
    if path.name == "davo-window.ini":
        return windows(data)
    if path.name == "nameplates.tsv":
        return nameplates(data)
    if path.suffix == ".csv":
        return curve(data)
    if path.suffix == ".log":
        return log(data)
    if path.suffix == ".jnl":
        return journal(data)
    if path.name.startswith("TESTFILE"):
        return capture(data)
    return record_file(data, path.suffix == ".GRP")


class Release(unittest.TestCase):
    maxDiff = None

    def test_the_readings_are_what_is_in_the_files(self):
        read = 0
        for path in sorted(HERE.glob("*/**/*.*")):
            kept = path.parent / (path.name.replace(".", "_") + ".read")
            if path.suffix == ".read" or not kept.exists():
                continue
            with self.subTest(path.relative_to(HERE)):
                self.assertEqual(reading(path), kept.read_text("ascii").splitlines())
            read += 1
        self.assertGreater(read, 52)

    def test_what_is_recovered_is_what_was_left(self):
        kept = sorted(HERE.glob("*/unsaved/*/recovered.read"))
        for path in kept:
            with self.subTest(path.relative_to(HERE)):
                self.assertEqual(recovered(path.parent), path.read_text("ascii").splitlines())
        self.assertGreaterEqual(len(kept), 7)


if __name__ == "__main__":
    sys.exit(unittest.main())
