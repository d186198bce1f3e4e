# SPDX-License-Identifier: GPL-3.0-or-later
"""Holds rows of tests against the table and the workbook of each record, which have so many columns
in common: hold_rows.py ROWS FOLDER COLUMNS."""

import csv
import pathlib
import sys

import openpyxl



def read(path, encoding):
    with open(path, encoding=encoding, newline="") as file:
        return list(csv.DictReader(file, strict=True))


def check_table(row, points, columns):
    """The texts of a test are the same in each of its points' rows."""
    for point in points:
        shared = row.keys() & point.keys()
        assert len(shared) == columns, sorted(shared)
        different = [(column, row[column], point[column]) for column in shared if row[column] != point[column]]
        assert not different, (row["file"], different)
    given = sum(1 for point in points if point["point"])
    assert int(row["points"]) == given, (row["file"], row["points"], given)


# What a test's sheet has in the cell behind this one.
LABELS = {
    "company": "COMPANY: ", "station": "STATION: ", "serial_number": "S/N: ", "test": "TEST NUMBER: ",
    "asa_10_50_V": "ASA 10/50 Vkp (Volts)", "asa_10_50_A": "ASA 10/50 Ikp (Amps)",
    "ieee_45_V": "IEEE 45 Vkp (Volts)", "ieee_45_A": "IEEE 45 Ikp (Amps)",
    "ieee_30_V": "IEEE 30 Vkp (Volts)", "ieee_30_A": "IEEE 30 Ikp (Amps)",
    "nameplate_ratio": "NAMEPLATE RATIO: ", "measured_ratio": "MEASURED RATIO: ",
    "percent_error": "PERCENT ERROR: ", "polarity": "POLARITY: ", "phase": "PHASE ANGLE: ",
}


def same(text, cell):
    try:
        return float(text) == float(cell)
    except ValueError:
        return text.lstrip("'") == str(cell)


def check_sheet(row, sheet):
    cells = [cell for line in sheet.iter_rows(values_only=True) for cell in line if cell is not None]
    for column, label in LABELS.items():
        cell = cells[cells.index(label) + 1]
        assert same(row[column], cell), (row["file"], column, row[column], cell)


def main():
    rows = read(sys.argv[1], "utf-8")
    folder = pathlib.Path(sys.argv[2])
    columns = int(sys.argv[3])
    tests = sheets = 0
    for table in sorted(folder.rglob("*.csv")):
        points = read(table, "utf-8-sig")
        record = "in" / table.relative_to(folder).with_suffix(".txt")
        mine = [row for row in rows if row["file"] == str(record)]
        for row in mine:
            check_table(row, [point for point in points if point["test"] == row["test"]], columns)
        tests += len(mine)
        assert len({point["test"] for point in points}) == len(mine), record
        if table.with_suffix(".xlsx").exists():
            workbook = openpyxl.load_workbook(table.with_suffix(".xlsx"))
            names = [name for name in workbook.sheetnames if name.startswith("Test ")]
            assert len(names) == len(mine), (record, names)
            for row, name in zip(mine, names):
                check_sheet(row, workbook[name])
                sheets += 1
    assert tests == len(rows) and sheets > tests / 2, (tests, sheets, len(rows))
    print(f"{tests} tests, {sheets} sheets")


main()
