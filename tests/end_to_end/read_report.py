#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Prints the cells of an Excel 97 workbook as JSON: {sheet: {"A1": value}}.

usage: read_report.py FILE
"""

import json
import sys

import xlrd


def cells(sheet):
    return {
        chr(ord("A") + column) + str(row + 1): sheet.cell_value(row, column)
        for row in range(sheet.nrows)
        for column in range(sheet.ncols)
        if sheet.cell_value(row, column) != ""
    }


if __name__ == "__main__":
    book = xlrd.open_workbook(sys.argv[1])
    json.dump({sheet.name: cells(sheet) for sheet in book.sheets()}, sys.stdout)
