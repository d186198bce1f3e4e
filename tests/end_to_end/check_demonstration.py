# SPDX-License-Identifier: GPL-3.0-or-later
"""The record file of the demonstration against what went over the line, byte for byte, and its
report against the record file.

usage: check_demonstration.py BYTE_LOG RECORD_FILE WORKBOOK
"""

import pathlib
import sys

import expected_record
import expected_report

HEADER = [
    "Example Power Co.",
    "Substation North",
    "Feeder 12",
    "Example Transformers",
    "RCT 1200/5",
    "4711-0815",
    "Annual test",
    "A. Operator",
]
NOTES = "Terminal box dry.\r\nNext test in two years."
NAMEPLATE = ("1200", "5")


def main(byte_log, record_file, workbook):
    shots = expected_record.shots_of(byte_log)
    kinds = [shot.ratio_only for shot in shots]
    if kinds != [False, False, False, True]:
        return f"not the shots of the demonstration: {kinds}"
    del shots[1]  # dropped by Repeat Test
    actual = pathlib.Path(record_file).read_bytes()
    expected = expected_record.record_file(
        pathlib.Path(record_file).name,
        *expected_record.begun(actual),
        [field.ljust(20) for field in HEADER],
        shots,
        NAMEPLATE,
        NOTES,
    )
    if actual != expected:
        return f"{record_file} is not what went over the line"
    print(f"{record_file}: {len(shots)} shots, {len(actual)} bytes, each as it went over the line")
    sheets = expected_report.read_report(workbook)
    wrong = expected_report.differences(record_file, sheets)
    if wrong:
        return "\n".join([f"{workbook} is not the report of {record_file}:", *wrong])
    print(f"{workbook}: sheets {', '.join(sheets)}, with the values of the record file")
    return 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
