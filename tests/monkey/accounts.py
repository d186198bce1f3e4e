# SPDX-License-Identifier: GPL-3.0-or-later
"""Where the shots are that went over the line, and whether a data folder agrees with itself.

Nothing here is shared with the program: what must be there is worked out from the instrument's byte
logs, with the arithmetic of expected_record and expected_download.
"""

import collections
import pathlib
import re
import urllib.parse

import expected_download
import expected_record

BLOCK = re.compile(rb"(?m)^REC NUMBER: ")
HEX = re.compile(r"[0-9A-Fa-f]{296}\Z")


def is_of_session(path):
    """A capture file or a journal, which has the shots as they came."""
    return path.name.startswith("TESTFILE")


class Logged:
    """A complete shot of a byte log."""

    def __init__(self, log, number, shot, clean):
        self.name = f"shot {number} of {log.name}"
        self.shot = shot
        self.whole = bool(HEX.match(shot.digits))
        lines = expected_record.shot_lines(0, shot, None) if self.whole else []
        # Without its number and without what depends on the nameplate.
        kept = [line for line in lines[1:] if not line.startswith(("NAMEPLATE", "PERCENT"))]
        cut = next((i for i, line in enumerate(kept) if line.startswith("MEASURED RATIO")), 0)
        # A line that noise changed may have another last ratio for another reader.
        first, second = kept[: cut + 1 if clean else cut], kept[cut + 1 : -1]
        self.parts = ["".join(line + "\r\n" for line in part).encode("cp1252")
                      for part in (first, second)]

    def count_in(self, data):
        """How often the shot is in the bytes of a record."""
        return min(data.count(part) for part in self.parts)

    def count_in_file(self, path, data):
        """The same for a record, or for a capture file or journal of a session."""
        if not is_of_session(path):
            return self.count_in(data)
        text = urllib.parse.unquote_to_bytes(data) if path.suffix == ".jnl" else data
        return b"".join(text.split()).count(self.shot.digits.encode())


class Old:
    """A shot of a record that was there before."""

    def __init__(self, path, block):
        self.name = f"{path.name}: {block[:3]!r}"
        self.parts = [measured(block)]

    def count_in(self, data):
        return data.count(self.parts[0])

    def count_in_file(self, path, data):
        return 0 if is_of_session(path) else self.count_in(data)


def measured(block):
    """A block from its points on, up to the end of its last line: its number and its description may
    change."""
    begin = re.search(rb"(?m)^(CURRENT|NUMBER OF DATA POINTS): ", block).start()
    return re.match(rb"(?s).*?KNEE POINT TYPE: [^\r]*\r\n", block[begin:])[0]


def old_shots(folder):
    """The shots of all records of a folder."""
    return [Old(path, block) for path in sorted(folder.glob("*.txt"))
            for block in BLOCK.split(path.read_bytes())[1:]]


class Line:
    """The shots of all byte logs of a run, in their order; a log that has ended is read once."""

    def __init__(self):
        self._ended = []

    def end(self, log, clean):
        self._ended += self._read(log, clean)

    @staticmethod
    def _read(log, clean):
        shots = expected_record.shots_of(log)
        return [Logged(log, i, shot, clean) for i, shot in enumerate(shots, 1)]

    def shots(self, log, clean):
        """log: the one that is still written, None without one."""
        return self._ended + (self._read(log, clean) if log else [])


def stored_files(folder):
    """All files below folder that may have shots: their bytes by path."""
    found = {}
    for path in sorted(pathlib.Path(folder).rglob("*")):
        if path.suffix.lower() in (".txt", ".jnl") and path.is_file():
            try:
                found[path] = path.read_bytes()
            except OSError:  # it has just gone
                continue
    return found


def missing_shots(shots, files):
    """Those of shots that are in no file. Of some that look alike in a record, the last ones."""
    alike = collections.defaultdict(list)
    for shot in shots:
        alike[tuple(shot.parts)].append(shot)
    missing = []
    for group in alike.values():
        of_session = {shot for shot in group for path, data in files.items()
                      if is_of_session(path) and shot.count_in_file(path, data)}
        others = [shot for shot in group if shot not in of_session]
        held = sum(group[0].count_in(data) for path, data in files.items()
                   if not is_of_session(path))
        missing += others[held:]
    return missing


def nameplate_trouble(block):
    """What is wrong with the two lines of a shot's block that depend on the nameplate."""
    text = block.decode("cp1252")
    plate = re.search(r"^NAMEPLATE RATIO: (.*?)\r$", text, re.M)[1]
    percent = re.search(r"^PERCENT ERROR: (.*?)\r$", text, re.M)[1]
    typed = re.fullmatch(r"(.*) \((.*):(.*)\)", plate)
    if not typed:
        return None if percent == "N/A" or plate[:1].isdigit() else f"{plate} has {percent}"
    return None


def record_troubles(path, data, shots, downloaded):
    """What is wrong with a record file that the program wrote; downloaded: the shots that the
    instrument's memory has sent. A shot whose record the line has damaged is told to the operator,
    who may keep it."""
    damaged = any(not shot.whole for shot in shots)
    troubles = []
    said = re.search(rb"# OF SHOTS: (\d\d)", data)
    blocks = BLOCK.split(data)[1:]
    if not said or int(said[1]) != len(blocks):
        troubles.append(f"{path.name} says {said and said[1]} shots and has {len(blocks)}")
    for number, block in enumerate(blocks, 1):
        if not re.match(rb" ?%d\r\n" % number, block):
            troubles.append(f"{path.name}: block {number} begins {block[:20]!r}")
        known = any(shot.count_in(block) for shot in shots) or measured(block) in downloaded
        if not damaged and not known:
            troubles.append(f"{path.name}: block {number} was never on the line: {block!r}")
        trouble = nameplate_trouble(block)
        if trouble:
            troubles.append(f"{path.name}: block {number}: {trouble}")
    return troubles


def downloaded_shots(log):
    """The shots of the records that a byte log has whole, as their files have them."""
    directory, replies = expected_download.replies(expected_record.read_byte_log(log))
    found = set()
    for number, reply in replies.items():
        if "DONE" in reply and "#" + number in directory:
            record = expected_download.record_file(directory, number, reply)
            found.update(measured(block) for block in BLOCK.split(record)[1:])
    return found


def is_record(data):
    """Whether a file is one, or a table or a certificate that the operator gave a record's name."""
    return data.startswith(b"TEST NUMBER: ")


def directory_entry(path, data):
    """The line of DIRDNLD.DNL that a record file has; None for one without twelve lines."""
    lines = data.decode("latin-1").split("\r\n")
    if len(lines) < 13 or not is_record(data):
        return None

    def after_colon(number, skipped):
        line = lines[number - 1]
        begin = line.find(":") + 1 + skipped
        return line[begin : begin + 20]

    entry = path.name.split(".")[0].strip() + "!" + lines[1][-8:] + " " + lines[2][-5:]
    entry += "TESTS=" + lines[3][-2:]
    keys = ["COMPANY", "STATION", "CIRCUIT", "MFR", "MODEL", "SN"]
    for number, key in enumerate(keys, 5):
        entry += f"{key}=" + after_colon(number, 1)
    return entry + "OPERATOR=" + after_colon(12, 0) + "COMMENTS=" + after_colon(11, 0)


def directory_troubles(folder, strangers):
    """Whether DIRDNLD.DNL has the records of folder; strangers: names that the program did not
    write and may have left out."""
    records = {path: path.read_bytes() for path in sorted(folder.iterdir())
               if ".txt" in path.name.lower() and path.is_file() and not path.name.startswith("~")}
    expected = sorted(directory_entry(path, data) for path, data in records.items()
                      if path.name not in strangers and directory_entry(path, data))
    file = folder / "DIRDNLD.DNL"
    if not file.exists():
        return [f"there is no DIRDNLD.DNL for {expected}"] if expected else []
    lines = file.read_bytes().decode("latin-1").split("\r\n")
    entries = lines[1:-1]
    troubles = []
    if lines[0] != f"REC=={len(entries):03}":
        troubles.append(f"DIRDNLD.DNL begins {lines[0]!r} and has {len(entries)} entries")
    names = {name.split(".")[0].strip() for name in strangers}
    listed = sorted(entry for entry in entries if entry.split("!")[0] not in names)
    if listed != expected:
        troubles.append(f"DIRDNLD.DNL has\n{listed}\nthe records are\n{expected}")
    dates = [entry.split("!", 1)[1][:8] for entry in entries]
    ordered = sorted(dates, key=lambda date: (date[6:], date[:5]), reverse=True)
    if [d[6:] + d[:5] for d in dates] != [d[6:] + d[:5] for d in ordered]:
        troubles.append(f"DIRDNLD.DNL is not sorted by date: {dates}")
    return troubles
