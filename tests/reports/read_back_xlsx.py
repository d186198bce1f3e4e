#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Prints what a workbook of a report holds, a line for each thing, for a test to compare.

usage: read_back_xlsx.py FILE
"""

import re
import sys
import xml.etree.ElementTree as xml
import zipfile

import openpyxl
from openpyxl.utils import get_column_letter

EMU_PER_POINT = 12700
DRAWING = "{http://schemas.openxmlformats.org/drawingml/2006/main}"
CHART = "{http://schemas.openxmlformats.org/drawingml/2006/chart}"


def text(value):
    return str(value).replace("\\", "\\\\").replace("\n", "\\n")


def cell_line(cell):
    if isinstance(cell.value, str):
        value = "text " + text(cell.value)
    elif cell.value is None:
        value = "empty"
    else:
        value = "number %.15g" % cell.value
    font, align = cell.font, cell.alignment
    looks = [
        font.name, "%g" % font.size, "bold" if font.b else "", "italic" if font.i else "",
        align.horizontal or "", align.vertical or "bottom", "wrap" if align.wrap_text else "",
        str(align.textRotation or 0), cell.number_format,
    ]
    return f"cell {cell.coordinate} {value} | {'/'.join(looks)}"


def rich_text(title):
    if title is None or title.tx is None:
        return ""
    return "\n".join("".join(run.t for run in paragraph.r or [])
                     for paragraph in title.tx.rich.p)


def line_of(properties):
    line = properties.line
    if line.noFill:
        return "none"
    return "%s %gpt" % (line.solidFill.srgbClr, line.width / EMU_PER_POINT)


def axis_line(which, axis):
    return " ".join([
        f"axis {which} log {axis.scaling.logBase:g}" if axis.scaling.logBase else f"axis {which} linear",
        axis.scaling.orientation, f"min {axis.scaling.min} max {axis.scaling.max}",
        f"units {axis.majorUnit} {axis.minorUnit}", f"crosses {axis.crosses} {axis.crossesAt}",
        f"labels {axis.tickLblPos}", f"marks {axis.majorTickMark or 'none'} {axis.minorTickMark or 'none'}",
        "major" if axis.majorGridlines else "-", "minor" if axis.minorGridlines else "-",
        text(rich_text(axis.title)),
    ])


def series_lines(series):
    yield "series %s" % (series.tx.v if series.tx is not None else "")
    yield f"  x {series.xVal.numRef.f} values {series.yVal.numRef.f}"
    yield "  line " + line_of(series.graphicalProperties)
    marker = series.marker
    if marker.symbol is None:  # how openpyxl reads "none"
        yield "  marker none"
    else:
        fill = marker.graphicalProperties.solidFill.srgbClr
        yield f"  marker {marker.symbol} {marker.size:g} {line_of(marker.graphicalProperties)} fill {fill}"
    yield "  smooth" if series.smooth else "  straight"


def chart_lines(chart):
    start, end = chart.anchor._from, chart.anchor.to
    place = f"{get_column_letter(start.col + 1)}{start.row + 1}"
    past = f"{get_column_letter(end.col + 1)}{end.row + 1}"
    yield f"chart {type(chart).__name__} {chart.scatterStyle} from {place} to {past}"
    yield "title " + text(rich_text(chart.title))
    yield axis_line("x", chart.x_axis)
    yield axis_line("y", chart.y_axis)
    if chart.legend is None:
        yield "legend none"
    else:
        hidden = ",".join(str(entry.idx) for entry in chart.legend.legendEntry)
        yield f"legend {chart.legend.position} without {hidden}"
    for series in chart.series:
        yield from series_lines(series)


def print_area(sheet):
    """Its addresses; a list before openpyxl 3.1, then a text with the sheet's name before each."""
    area = sheet.print_area
    return ",".join(area) if isinstance(area, list) else area.replace(f"'{sheet.title}'!", "")


def sheet_lines(sheet):
    yield f"sheet {sheet.title}"
    for column in sorted(sheet.column_dimensions.values(), key=lambda c: c.min):
        yield f"columns {column.min}-{column.max} %.2f" % column.width
    if sheet.sheet_format.customHeight:
        yield f"rows {sheet.sheet_format.defaultRowHeight:g}"
    for row in (1, 42, 43):
        if row in sheet.row_dimensions and sheet.row_dimensions[row].height:
            yield f"row {row} {sheet.row_dimensions[row].height:g}"
    for merged in sorted(str(area) for area in sheet.merged_cells.ranges):
        yield f"merged {merged}"
    merged_away = {cell for area in sheet.merged_cells.ranges for r in area.rows for cell in r[:]}
    for area in sheet.merged_cells.ranges:
        merged_away.discard((area.min_row, area.min_col))
    for row in sheet.iter_rows():
        for cell in row:
            known = cell.value is not None or cell.has_style
            if known and (cell.row, cell.column) not in merged_away:
                yield cell_line(cell)
    page = sheet.page_setup
    fitted = sheet.sheet_properties.pageSetUpPr and sheet.sheet_properties.pageSetUpPr.fitToPage
    wide = 1 if page.fitToWidth is None else page.fitToWidth
    tall = 1 if page.fitToHeight is None else page.fitToHeight
    yield f"page {page.orientation} {'fit' if fitted else 'unfitted'} {wide} {tall} paper {page.paperSize}"
    yield f"print area {print_area(sheet) if sheet.print_area else 'none'} titles {sheet.print_title_rows} {sheet.print_title_cols}"
    footer = sheet.oddFooter.center
    if footer.text:
        yield f"footer {footer.font} {footer.size} {footer.text}"
    yield f"selected {sheet.sheet_view.selection[0].activeCell}"
    for chart in sheet._charts:
        yield from chart_lines(chart)


def frame_of(properties):
    line = properties.find(f"{DRAWING}ln")
    colour = line.find(f"{DRAWING}solidFill/{DRAWING}srgbClr").get("val")
    return "%gpt %s" % (int(line.get("w")) / EMU_PER_POINT, colour)


def letters_of(chart):
    """All letters that a chart uses: titles, axis titles, labels."""
    letters = set()
    for run in [*chart.iter(f"{DRAWING}defRPr"), *chart.iter(f"{DRAWING}rPr")]:
        name = run.find(f"{DRAWING}latin").get("typeface")
        letters.add((int(run.get("sz")) / 100, name + (" bold" if run.get("b") == "1" else "")))
    return " ".join(f"{name} {size:g}" for size, name in sorted(letters))


def part_lines(path):
    """What openpyxl leaves out: pictures, and the looks of plot areas."""
    with zipfile.ZipFile(path) as parts:
        names = sorted(parts.namelist(), key=lambda name: (len(name), name))
        for name in names:
            if re.fullmatch(r"xl/drawings/drawing\d+\.xml", name):
                yield f"drawing with {parts.read(name).decode().count('<xdr:pic>')} pictures"
            if re.fullmatch(r"xl/charts/chart\d+\.xml", name):
                chart = xml.fromstring(parts.read(name))
                area = chart.find(f".//{CHART}plotArea/{CHART}spPr")
                fill = area.find(f"{DRAWING}solidFill/{DRAWING}srgbClr").get("val")
                frame = frame_of(chart.find(f"{CHART}spPr"))
                axes = {frame_of(axis.find(f"{CHART}spPr")) for axis in chart.iter(f"{CHART}valAx")}
                yield (f"plot area {frame_of(area)} fill {fill}, chart {frame}, "
                       f"axes {' '.join(axes)}, {letters_of(chart)}")
        yield f"media {sum(name.startswith('xl/media/') for name in names)}"


def main():
    workbook = openpyxl.load_workbook(sys.argv[1])
    print(f"font {workbook._fonts[0].name} {workbook._fonts[0].sz:g}")
    print(f"active {workbook.active.title}")
    for sheet in workbook.worksheets:
        for line in sheet_lines(sheet):
            print(line)
    for line in part_lines(sys.argv[1]):
        print(line)


main()
