# SPDX-License-Identifier: GPL-3.0-or-later
"""Prints the rows of a CSV file, every field as the hexadecimal digits of its UTF-8 and a blank."""

import csv
import sys

with open(sys.argv[1], encoding="utf-8-sig", newline="") as file:
    for row in csv.reader(file, strict=True):
        print("".join(field.encode("utf-8").hex() + " " for field in row))
