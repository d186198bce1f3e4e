# SPDX-License-Identifier: GPL-3.0-or-later
"""What a downloaded record file must hold, worked out from what went over the line.

Nothing here is shared with the program: the directory and the records are taken from the
instrument's byte log and laid out with decimal arithmetic.
"""

import decimal
import re

from expected_record import HEADER_KEYS, KNEES, TENTH, point_lines, reader, rounded

D = decimal.Decimal


def replies(log):
    """(directory, {record number: reply to "R"}) of a byte log; a cut reply is the last one."""
    directory, records = "", {}
    number, heard = None, None
    for to_pc, data in log:
        text = data.decode("cp1252")
        if to_pc:
            if heard == "d":
                directory += text
            elif heard == "R":
                records[number] += text
            continue
        for command in re.findall(r"L\d{3}|[A-Za-z]", text):
            if command[0] == "L":
                number = command[1:]
            heard = command[0]
            if heard == "d":
                directory = ""
            elif heard == "R":
                records[number] = ""
    return directory, records


def header_lines(directory, number):
    record = directory[directory.index("#" + number + "\r\n") :]
    date, time = re.match(r"#\d{3}\r\n(.{8}) (.{5})", record).groups()
    lines = [
        "TEST NUMBER: TST_" + number,
        "DATE: " + date,
        "TIME: " + time,
        "# OF SHOTS: " + re.search("TESTS=(..)", record)[1],
    ]
    return lines + [f"{key}: " + re.search(f"{key}=(.{{20}})", record)[1] for key in HEADER_KEYS]


def phase_lines(word):
    degrees = float(word) * 0.1  # in double precision: 2699 is a hair above 269.9
    polarity = "N/A"
    if 0 <= degrees <= 90 or 270 <= degrees <= 360:
        polarity = "IN PHASE"
    elif 90.1 <= degrees <= 269.9:
        polarity = "OUT OF PHASE"
    return [
        "POLARITY: " + polarity,
        f"PHASE ANGLE: {rounded(word * TENTH, 1)} DEG",
    ]


def nameplate_lines(high, low, ratio):
    if high in (0, 0xFFFF) or low in (0, 0xFFFF):
        return ["NAMEPLATE RATIO: N/A", "PERCENT ERROR: N/A"]
    # In double precision and 15 digits: 400.38 is a hair less than 0.095 % above 400.
    plate = float(high) / (float(low) * 0.1)
    error = abs(float(ratio) - plate) / plate * 100
    plate, error = (D(f"{value:.15g}") for value in (plate, error))
    return [
        f"NAMEPLATE RATIO: {rounded(plate, 3)}",
        f"PERCENT ERROR: {rounded(error, 2)} %",
    ]


def test_lines(number, image):
    word, scale = reader(image)
    points = point_lines(word, scale)
    ratio = int.from_bytes(image[136:140], "little") * D("0.0001")
    return [
        f"REC NUMBER:  {number}",
        *points,
        f"NUMBER OF DATA POINTS: {len(points)}",
        f"KNEE VOLTAGE: {rounded(word(128) * TENTH, 3)} VOLTS",
        f"KNEE CURRENT: {rounded(word(130) * scale, 3)} AMPS",
        f"EXCITATION CUR: {rounded(word(132) * scale, 3)} AMPS",
        f"EXCITATION VTG: {rounded(word(134) * TENTH, 3)} VOLTS",
        f"MEASURED RATIO: {rounded(ratio, 3)}",
        *phase_lines(word(140)),
        *nameplate_lines(word(142), word(144), ratio),
        "KNEE POINT TYPE: " + KNEES.get(image[146], "ASA 10%VTG -> 50%CUR"),
    ]


def record_file(directory, number, reply):
    """The bytes of the record's file."""
    fields = re.findall("[0-9A-F]+", reply[: reply.index("DONE")])
    digits = "".join(fields[12:])
    lines = header_lines(directory, number)
    for test in range(int(fields[0][:2], 16)):
        block = digits[304 * test : 304 * (test + 1)]
        lines += test_lines(test + 1, bytes.fromhex(block))
    return "".join(line + "\r\n" for line in lines).encode("cp1252")
