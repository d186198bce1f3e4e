#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Prints what an Excel 97 workbook of a report holds, a line for each thing, for a test to compare.

usage: read_back_xls.py FILE

Cells by xlrd; page setup and charts from the records of the file itself ([MS-XLS]).
"""

import struct
import sys

import xlrd
from xlrd.compdoc import CompDoc

BOF, EOF = 0x0809, 0x000A
CHART = 0x0020  # substream type in BOF


def text(value):
    return str(value).replace("\\", "\\\\").replace("\n", "\\n")


def address(row, column):
    return chr(ord("A") + column) + str(row + 1)


def cell_lines(book, sheet):
    for row in range(sheet.nrows):
        for column, cell in enumerate(sheet.row(row)):
            if cell.ctype in (xlrd.XL_CELL_EMPTY, xlrd.XL_CELL_BLANK):
                continue
            form = book.xf_list[cell.xf_index]
            font = book.font_list[form.font_index]
            if cell.ctype == xlrd.XL_CELL_TEXT:
                value = "text " + text(cell.value)
            else:
                value = "number %.15g" % cell.value
            looks = [font.name, "%g" % (font.height / 20), "bold" if font.weight >= 600 else "",
                     {0: "general", 1: "left", 2: "center"}.get(form.alignment.hor_align, "?"),
                     "wrap" if form.alignment.text_wrapped else "",
                     book.format_map[form.format_key].format_str]
            yield f"{sheet.name}!{address(row, column)} {value} | {'/'.join(looks)}"


def sheet_lines(book, sheet):
    yield f"{sheet.name} sheet"
    for row, row_end, column, column_end in sheet.merged_cells:
        yield (f"{sheet.name} merged {address(row, column)}:"
               f"{address(row_end - 1, column_end - 1)}")
    for column, info in sorted(sheet.colinfo_map.items()):
        if column <= 6:
            yield f"{sheet.name} width {chr(ord('A') + column)} {info.width / 256:.1f}"
    yield from cell_lines(book, sheet)


def records(path):
    with open(path, "rb") as file:
        document = CompDoc(file.read(), logfile=sys.stderr)
    data, base, size = document.locate_named_stream("Workbook")
    stream, at = data[base:base + size], 0
    while at + 4 <= len(stream):
        kind, length = struct.unpack_from("<HH", stream, at)
        yield kind, stream[at + 4:at + 4 + length]
        at += 4 + length


def string8(data):
    """A short string with its length in one byte and the flag for 16-bit characters behind it."""
    size, wide = data[0], data[1] & 1
    return data[2:2 + 2 * size].decode("utf-16-le") if wide else data[2:2 + size].decode("latin-1")


def string16(data):
    size, wide = struct.unpack_from("<HB", data)
    return (data[3:3 + 2 * size].decode("utf-16-le") if wide & 1
            else data[3:3 + size].decode("latin-1"))


class Reader:
    """Walks the records and knows on which sheet it is and whether inside a chart."""

    def __init__(self, names, fonts):
        self.fonts = fonts
        self.names, self.sheet, self.links = names, -1, []
        self.stack, self.entries = [], 0
        self.lines_of_chart, self.letters = set(), set()

    def place(self):
        return self.names[self.sheet] if 0 <= self.sheet < len(self.names) else "globals"

    def reference(self, tokens):
        link, = struct.unpack_from("<H", tokens, 1)
        if tokens[0] & 0x1F == 0x1B:
            row, row_end, column, column_end = struct.unpack_from("<HHHH", tokens, 3)
        else:
            row, column = struct.unpack_from("<HH", tokens, 3)
            row_end, column_end = row, column
        return (f"{self.names[self.links[link]]}!{address(row, column & 0xFF)}:"
                f"{address(row_end, column_end & 0xFF)}")

    def globals_and_sheets(self, kind, data):
        if kind == 0x0017:  # EXTERNSHEET
            count, = struct.unpack_from("<H", data)
            self.links = [struct.unpack_from("<HHH", data, 2 + 6 * i)[1] for i in range(count)]
        elif kind == 0x003D:  # WINDOW1
            yield f"active {self.names[struct.unpack_from('<H', data, 10)[0]]}"
        elif kind == 0x005D and data[4:6] == b"\x08\0":  # OBJ: a picture
            yield f"{self.place()} picture"
        elif kind == 0x023E:  # WINDOW2
            row, column = struct.unpack_from("<HH", data, 2)
            yield f"{self.place()} seen from {address(row, column)}"
        elif kind == 0x001D:  # SELECTION
            row, column = struct.unpack_from("<HH", data, 1)
            yield f"{self.place()} selected {address(row, column)}"
        elif kind == 0x0018 and data[3] == 1 and data[14:16] == b"\0\x06":  # NAME: print area
            tab, = struct.unpack_from("<H", data, 8)
            yield f"{self.names[tab - 1]} print area {self.reference(data[16:])}"
        elif kind == 0x00A1:  # SETUP
            _, _, _, wide, tall, flags = struct.unpack_from("<6H", data)
            shape = "portrait" if flags & 2 else "landscape"
            yield f"{self.place()} page {shape} {wide}x{tall}"
        elif kind == 0x0081:  # WSBOOL
            yield f"{self.place()} fit {bool(struct.unpack('<H', data)[0] & 0x100)}"
        elif kind == 0x0015 and data:  # FOOTER
            yield f"{self.place()} footer {string16(data)}"
        elif kind == 0x0014 and data:  # HEADER
            yield f"{self.place()} header {string16(data)}"

    def chart(self, kind, data):
        if kind == 0x101F:  # VALUERANGE
            flags, = struct.unpack_from("<H", data, 40)
            scale = "logarithmic" if flags & 0x20 else "linear"
            automatic = "automatic" if flags & 0x1F == 0x1F else "fixed %x" % (flags & 0x1F)
            yield f"{self.place()} axis {scale} {automatic}"
        elif kind == 0x101E:  # TICK
            yield f"{self.place()} ticks major {data[0]} minor {data[1]} labels {data[2]}"
        elif kind == 0x1021:  # AXISLINEFORMAT
            yield f"{self.place()} line {struct.unpack_from('<H', data)[0]}"
        elif kind == 0x1051 and data[1] == 2:  # BRAI with a reference
            role = {0: "name", 1: "values", 2: "x"}.get(data[0], "other")
            yield f"{self.place()} {role} {self.reference(data[8:])}"
        elif kind == 0x1009:  # MARKERFORMAT
            colour, fill, form = struct.unpack_from("<IIH", data)
            size, = struct.unpack_from("<I", data, 16)
            if form:
                yield f"{self.place()} marker {form} {colour:06x} {fill:06x} {size / 20:g}"
        elif kind == 0x100D:  # SERIESTEXT
            yield f"{self.place()} text {text(string8(data[2:]))}"
        elif kind == 0x1007:  # LINEFORMAT
            red, green, blue = data[:3]
            self.lines_of_chart.add(f"{red:02x}{green:02x}{blue:02x}")
        elif kind == 0x1026:  # FONTX
            font = self.fonts[struct.unpack("<H", data)[0]]
            weight = " bold" if font.weight >= 600 else ""
            self.letters.add((font.height / 20, f"{font.name}{weight}"))
        elif kind == 0x1003:  # SERIES
            self.entries += 1
        elif kind == 0x1043 and data[2] & 1:  # LEGENDEXCEPTION
            self.entries -= 1
        elif kind == 0x1015:  # LEGEND
            yield f"{self.place()} legend"
            yield f"{self.place()} legend entries {self.entries}"

    def lines(self, path):
        for kind, data in records(path):
            if kind == BOF:
                self.stack.append(struct.unpack_from("<H", data, 2)[0])
                if len(self.stack) == 1 and self.stack[0] != 5:
                    self.sheet += 1
                if self.stack[-1] == CHART:
                    self.entries = 0
                    self.lines_of_chart, self.letters = set(), set()
                    yield f"{self.place()} chart"
            elif kind == EOF:
                if self.stack.pop() == CHART:
                    letters = " ".join(f"{name} {size:g}" for size, name in sorted(self.letters))
                    yield f"{self.place()} looks {letters}, {' '.join(sorted(self.lines_of_chart))}"
            elif self.stack[-1] == CHART:
                yield from self.chart(kind, data)
            else:
                yield from self.globals_and_sheets(kind, data)


def main():
    book = xlrd.open_workbook(sys.argv[1], formatting_info=True)
    for sheet in book.sheets():
        for line in sheet_lines(book, sheet):
            print(line)
    for line in Reader(book.sheet_names(), book.font_list).lines(sys.argv[1]):
        print(line)


main()
