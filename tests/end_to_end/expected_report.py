# SPDX-License-Identifier: GPL-3.0-or-later
"""What the workbook of a record file must hold, read from the record file's own lines."""

import json
import pathlib
import re
import subprocess

XLRD = "/usr/bin/python3"  # the one that has xlrd
READ = pathlib.Path(__file__).with_name("read_report.py")
HEADER_CELLS = {
    "MODEL": "B7",
    "SN": "B8",
    "COMMENTS": "B9",
    "COMPANY": "D4",
    "STATION": "D5",
    "CIRCUIT": "D6",
    "MFR": "D7",
    "OPERATOR": "D8",
}
RESULT_CELLS = {
    "NAMEPLATE RATIO": "B13",
    "MEASURED RATIO": "D13",
    "POLARITY": "B14",
    "PERCENT ERROR": "B15",
    "EXCITATION VTG": "B16",
    "EXCITATION CUR": "D16",
}
UNITS = (" VOLTS", " AMPS")


def read_report(path):
    """{sheet: {cell: value}} of a workbook, as another program reads it."""
    done = subprocess.run([XLRD, READ, path], check=True, capture_output=True, timeout=60)
    return json.loads(done.stdout)


def lines_of(text):
    """{key: value} of a record file's lines; the first of a key counts."""
    found = {}
    for key, value in re.findall(r"(?m)^([^:\r\n]+): *(.*?) *\r?$", text):
        found.setdefault(key, value)
    return found


def same(shown, value):
    """A number is shown as a number."""
    for unit in UNITS:
        value = value.removesuffix(unit)
    return float(value) == shown if isinstance(shown, float) else shown == value


def differences(record_file, sheets):
    """What of a record file is not in its workbook, a list of texts."""
    record_file = pathlib.Path(record_file)
    record = record_file.read_bytes().decode("cp1252")
    head, *tests = record.split("REC NUMBER:")
    tests[-1], _, notes = tests[-1].partition("NOTES:\r\n")
    wrong = []
    names = [f"Test {number}-Graph" for number in range(1, len(tests) + 1)]
    names += ["SummaryGraph"] * (len(tests) > 1) + ["NOTES"] * bool(notes.strip())
    if list(sheets) != names:
        return [f"sheets {list(sheets)}, not {names}"]

    def check(sheet, cell, value):
        shown = sheets[sheet].get(cell, "")
        if not same(shown, value):
            wrong.append(f"{sheet}!{cell} is {shown!r}, not {value!r}")

    fields = lines_of(head)
    for name, test in zip(names, tests):
        check(name, "A1", "TEST REPORT")
        check(name, "B4", f"{fields['DATE']} - {fields['TIME']}:00")
        check(name, "B5", record_file.stem)
        for key, cell in HEADER_CELLS.items():
            check(name, cell, fields[key])
        results = lines_of(test)
        for key, cell in RESULT_CELLS.items():
            check(name, cell, results[key])
        points = re.findall(r"CURRENT: *(\S+?)VOLTAGE: *(\S+)", test)
        rows = [(sheets[name].get(f"B{row}"), sheets[name].get(f"C{row}")) for row in range(19, 101)]
        if not points and rows[0] != ("N/A", "N/A"):
            wrong.append(f"{name} shows points, but nothing was measured")
        # Between the measured points are those of the grid.
        for point in points:
            if tuple(map(float, point)) not in rows:
                wrong.append(f"{name} does not show {point}")
    return wrong
