# SPDX-License-Identifier: GPL-3.0-or-later
"""What a record file must hold, worked out from what went over the line.

Nothing here is shared with the program: the instrument's byte log is read, the hexadecimal record
of each shot is decoded with decimal arithmetic, and the file's bytes are laid line by line.
"""

import dataclasses
import decimal
import pathlib
import re

D = decimal.Decimal
TENTH = D("0.1")
POINTS = 32
KNEES = {1: "IEEE 30 DEGREE TANGENT", 2: "IEEE 45 DEGREE TANGENT"}


@dataclasses.dataclass
class LineShot:
    """One shot as it went over the line."""

    ratio_only: bool
    digits: str  # of the record, between DATA and DONE
    ratio: str  # text after the last "RATIO=", empty when there was none


def read_byte_log(path):
    """The instrument's byte log as a list of (to_pc, bytes)."""
    return entries_of(pathlib.Path(path).read_text("latin-1"))


def entries_of(log):
    """The same for the text of a byte log."""
    line = re.compile(r"\s*\d+\.\d+ ([<>])((?: [0-9A-F]{2})+)  ")
    entries = []
    for text in log.split("\n"):
        found = line.match(text)
        if found:
            entries.append((found[1] == ">", bytes.fromhex(found[2])))
        elif text:
            raise ValueError(f"not a line of a byte log: {text!r}")
    return entries


def shots_on_line(log):
    """The complete shots of a byte log, a list of (to_pc, bytes) in the order of the line."""
    shots = []
    heard = None
    ratio_only = False
    for to_pc, data in log:
        if not to_pc:
            for command in data.decode("latin-1"):
                if command in "Tt":
                    heard, ratio_only = "", command == "t"
                elif command == "\x1b":
                    heard = None
            continue
        if heard is None:
            continue
        heard += data.decode("latin-1")
        record = re.search(r"DATA(.*?)DONE", heard, re.DOTALL)
        if record:
            ratios = re.findall(r"RATIO=(.*?)\r\n", heard[: record.start()])
            digits = re.sub(r"[ \r\n]", "", record.group(1))
            shots.append(LineShot(ratio_only, digits, ratios[-1] if ratios else ""))
            heard = None
    return shots


def shots_of(byte_log):
    return shots_on_line(read_byte_log(byte_log))


def begun(record):
    """The texts of date and time in the bytes of a record file."""
    return [text.decode() for text in re.search(rb"DATE: (.*)\r\nTIME: (.*)\r\n", record).groups()]


def rounded(value, places):
    """Half away from zero, places behind the point."""
    return str(value.quantize(D(1).scaleb(-places), rounding=decimal.ROUND_HALF_UP))


def general(value):
    """As short as it goes."""
    return format(value.normalize(), "f")


def percent_error(ratio, nameplate):
    calculated = D(rounded(D(nameplate[0]) / D(nameplate[1]), 3))
    return calculated, rounded(abs(D(ratio) - calculated) / calculated * 100, 2)


def polarity(degrees):
    if 0 <= degrees <= 90 or 270 <= degrees <= 360:
        return "IN PHASE"
    if D("90.1") <= degrees <= D("269.9"):
        return "OUT OF PHASE"
    return "N/A"


def reader(image):
    """What reads the word at an offset of a record's bytes, and the amperes of a current's one."""
    scale = D("0.0002") if image[147] == 10 else D("0.0001")
    return lambda offset: D(int.from_bytes(image[offset : offset + 2], "little")), scale


def point_lines(word, scale):
    """The lines of the points, from the last slot to the first."""
    points = []
    for slot in reversed(range(POINTS)):
        current, voltage = word(4 * slot) * scale, word(4 * slot + 2) * TENTH
        if current > 0 and voltage > 0:
            points.append(f"CURRENT: {rounded(current, 4)}VOLTAGE: {rounded(voltage, 1)}")
    return points


def shot_lines(number, shot, nameplate):
    """The lines of one shot; nameplate is (H text, X text) or None."""
    image = bytes.fromhex(shot.digits)
    if len(image) != 148:
        raise ValueError(f"the record has {len(image)} bytes")
    word, scale = reader(image)
    points = point_lines(word, scale)
    degrees = word(140) * TENTH
    plate, error = "N/A", "N/A"
    if nameplate:
        calculated, percent = percent_error(shot.ratio, nameplate)
        plate = f"{general(calculated)} ({nameplate[0]}:{nameplate[1]})"
        error = f"{percent}%"
    return [
        f"REC NUMBER: {number}",
        *points,
        f"NUMBER OF DATA POINTS: {len(points)}",
        f"KNEE VOLTAGE: {general(word(128) * TENTH)} VOLTS",
        f"KNEE CURRENT: {general(word(130) * scale)} AMPS",
        f"EXCITATION CUR: {rounded(word(132) * scale, 3)} AMPS",
        f"EXCITATION VTG: {general(word(134) * TENTH)} VOLTS",
        f"MEASURED RATIO: {shot.ratio}",
        f"POLARITY: {polarity(degrees)}",
        f"PHASE ANGLE: {rounded(degrees, 1)} DEG",
        f"NAMEPLATE RATIO: {plate}",
        f"PERCENT ERROR: {error}",
        f"KNEE POINT TYPE: {KNEES.get(image[146], 'ASA 10%VTG -> 50%CUR')}",
    ]


HEADER_KEYS = ["COMPANY", "STATION", "CIRCUIT", "MFR", "MODEL", "SN", "COMMENTS", "OPERATOR"]


def record_file(name, date, time, header, shots, nameplate, notes=None, count=None):
    """The bytes of the record file. header: the eight stored fields; nameplate: see shot_lines;
    count: what "# OF SHOTS" says, the number of shots unless given."""
    lines = [
        f"TEST NUMBER: {name.removesuffix('.txt')}",
        f"DATE: {date}",
        f"TIME: {time}",
        f"# OF SHOTS: {len(shots) if count is None else count:02d}",
        *(f"{key}: {field}" for key, field in zip(HEADER_KEYS, header)),
    ]
    for number, shot in enumerate(shots, 1):
        lines += shot_lines(number, shot, nameplate)
    if notes:
        lines += ["NOTES:", notes]
    return "".join(line + "\r\n" for line in lines).encode("cp1252")
