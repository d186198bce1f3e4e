#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Makes letterhead.png and DAVO_Header.xls, the workbook that every test's sheet is copied from.

Both are committed; this is for whoever changes the letterhead. Needs rsvg-convert (Debian:
librsvg2-bin), LibreOffice Calc and the Liberation fonts.

Rows and lines here and in src/reports/xlsx/letterhead.cpp are the same, so that a report looks
alike whatever program makes it.
"""

import argparse
import base64
import pathlib
import subprocess
import tempfile

HERE = pathlib.Path(__file__).resolve().parents[1] / "packaging" / "template"
PICTURE_WIDTH, PICTURE_HEIGHT = 160, 40  # points, as in letterhead.svg
PICTURE_LEFT, PICTURE_TOP = 2, 3  # points from the corner of A1
PIXELS_PER_POINT = 4
# In 1/100 mm. What a spreadsheet shows as 20 characters: measured in the file that comes out.
COLUMN_WIDTH = 4055
OTHER_COLUMN_WIDTH = 1789  # 8.43 characters
# A column of 20 characters is 5 % wider in Calc than in Excel, and a picture between two cells is
# stretched with them: half of that in each.
STRETCH = 1.025
HEAD_HEIGHT = 48  # points; room for the picture beside the title
ROW_HEIGHT = 12.75

# Row: (label in column A, label in column C). The report writes its own over them.
LABELS = {
    4: ("DATE & TIME: ", "COMPANY: "),
    5: ("FILENAME: ", "STATION: "),
    6: ("TEST NUMBER: ", "CIRCUIT: "),
    7: ("MODEL: ", "MFR: "),
    8: ("S/N: ", "OPERATOR: "),
    9: ("COMMENTS: ", "TEST NOTES: "),
    10: ("ASA 10/50 Vkp (Volts)", "ASA 10/50 Ikp (Amps)"),
    11: ("IEEE 30 Vkp (Volts)", "IEEE 30 Ikp (Amps)"),
    12: ("IEEE 45 Vkp (Volts)", "IEEE 45 Ikp (Amps)"),
    13: ("NAMEPLATE RATIO: ", "MEASURED RATIO: "),
    14: ("POLARITY: ", "PHASE ANGLE: "),
    15: ("PERCENT ERROR: ", ""),
    16: ("EXCITATION VTG (Volts)", "EXCITATION CUR (Amps)"),
}
LAST_ROW = 100

STYLES = f"""
<office:styles>
 <style:default-style style:family="table-cell">
  <style:text-properties style:font-name="Arial" fo:font-family="Arial" fo:font-size="10pt"/>
 </style:default-style>
 <style:style style:name="Default" style:family="table-cell"/>
</office:styles>
<office:automatic-styles>
 <style:style style:name="wide" style:family="table-column">
  <style:table-column-properties style:column-width="{COLUMN_WIDTH / 100}mm"/>
 </style:style>
 <style:style style:name="narrow" style:family="table-column">
  <style:table-column-properties style:column-width="{OTHER_COLUMN_WIDTH / 100}mm"/>
 </style:style>
 <style:style style:name="head" style:family="table-row">
  <style:table-row-properties style:row-height="{HEAD_HEIGHT}pt" style:use-optimal-row-height="false"/>
 </style:style>
 <style:style style:name="row" style:family="table-row">
  <style:table-row-properties style:row-height="{ROW_HEIGHT}pt" style:use-optimal-row-height="false"/>
 </style:style>
 <style:style style:name="title" style:family="table-cell" style:parent-style-name="Default">
  <style:table-cell-properties style:vertical-align="bottom"/>
  <style:paragraph-properties fo:text-align="center"/>
  <style:text-properties fo:font-size="12pt" fo:font-weight="bold"/>
 </style:style>
 <style:style style:name="rule" style:family="table-cell" style:parent-style-name="Default">
  <style:table-cell-properties fo:border-bottom="1.5pt solid #1a2f42"/>
  <style:text-properties fo:font-size="8pt" fo:color="#4a6478"/>
 </style:style>
 <style:style style:name="value" style:family="table-cell" style:parent-style-name="Default">
  <style:table-cell-properties fo:border-bottom="0.5pt solid #c0c0c0"/>
  <style:paragraph-properties fo:text-align="start"/>
  <style:text-properties fo:font-size="8pt"/>
 </style:style>
 <style:style style:name="label" style:family="table-cell" style:parent-style-name="Default">
  <style:table-cell-properties fo:border-bottom="0.5pt solid #c0c0c0"/>
  <style:paragraph-properties fo:text-align="start"/>
  <style:text-properties fo:font-size="8pt" fo:font-weight="bold"/>
 </style:style>
 <style:style style:name="tablehead" style:family="table-cell" style:parent-style-name="Default">
  <style:table-cell-properties fo:border-bottom="0.75pt solid #1a2f42"/>
  <style:paragraph-properties fo:text-align="start"/>
  <style:text-properties fo:font-size="8pt" fo:font-weight="bold"/>
 </style:style>
 <style:style style:name="body" style:family="table-cell" style:parent-style-name="Default">
  <style:paragraph-properties fo:text-align="start"/>
  <style:text-properties fo:font-size="8pt"/>
 </style:style>
 <style:style style:name="sheet" style:family="table" style:master-page-name="Default">
  <style:table-properties table:display="true"/>
 </style:style>
 <style:page-layout style:name="page">
  <style:page-layout-properties style:print-orientation="landscape" fo:page-width="297mm"
    fo:page-height="210mm" style:scale-to-X="1" style:scale-to-Y="1" fo:margin-left="10mm" fo:margin-right="10mm"
    fo:margin-top="10mm" fo:margin-bottom="10mm"/>
  <style:header-style/><style:footer-style/>
 </style:page-layout>
</office:automatic-styles>
<office:master-styles>
 <style:master-page style:name="Default" style:page-layout-name="page">
  <style:header style:display="false"/><style:footer style:display="false"/>
 </style:master-page>
</office:master-styles>
"""

NAMESPACES = " ".join(
    f'xmlns:{prefix}="urn:oasis:names:tc:opendocument:xmlns:{name}:1.0"'
    for prefix, name in {
        "office": "office", "style": "style", "text": "text", "table": "table",
        "draw": "drawing", "svg": "svg-compatible", "fo": "xsl-fo-compatible",
    }.items())


def cell(style, text="", inside="", more=""):
    kept = text.replace("&", "&amp;")
    if kept.endswith(" "):
        kept = kept[:-1] + "<text:s/>"  # a blank at the end is kept only so
    content = f"<text:p>{kept}</text:p>" if text else ""
    kind = ' office:value-type="string"' if text else ""
    return f'<table:table-cell table:style-name="{style}"{kind}{more}>{inside}{content}</table:table-cell>'


def row(style, cells):
    return f'<table:table-row table:style-name="{style}">{"".join(cells)}</table:table-row>'


def document(picture):
    width = PICTURE_WIDTH * STRETCH
    end = PICTURE_LEFT + width - COLUMN_WIDTH * 72 / 2540
    frame = (f'<draw:frame draw:name="Letterhead" table:end-cell-address="HEADER.B1" '
             f'table:end-x="{end:.2f}pt" table:end-y="{PICTURE_TOP + PICTURE_HEIGHT}pt" '
             f'svg:x="{PICTURE_LEFT}pt" svg:y="{PICTURE_TOP}pt" '
             f'svg:width="{width}pt" svg:height="{PICTURE_HEIGHT}pt">'
             f'<draw:image draw:mime-type="image/png"><office:binary-data>'
             f'{base64.b64encode(picture).decode()}</office:binary-data></draw:image></draw:frame>')
    covered = "<table:covered-table-cell/>" * 3
    rows = [row("head", [cell("title", "TEST REPORT", frame,
                              ' table:number-columns-spanned="4" table:number-rows-spanned="1"'),
                         covered]),
            row("row", [cell("rule")] * 4),
            row("row", [cell("body")] * 4)]
    for number in range(4, LAST_ROW + 1):
        if number in LABELS:
            left, right = LABELS[number]
            cells = [cell("label", left), cell("value"), cell("label", right), cell("value")]
        else:
            cells = [cell("tablehead" if number == 18 else "body")] * 4
        rows.append(row("row", cells))
    return (f'<?xml version="1.0" encoding="UTF-8"?><office:document {NAMESPACES} '
            f'office:version="1.3" office:mimetype="application/vnd.oasis.opendocument.spreadsheet">'
            f'{STYLES}<office:body><office:spreadsheet>'
            f'<table:table table:name="HEADER" table:style-name="sheet">'
            f'<table:table-column table:style-name="wide" table:number-columns-repeated="4"/>'
            f'<table:table-column table:style-name="narrow" table:number-columns-repeated="252"/>'
            f'{"".join(rows)}</table:table></office:spreadsheet></office:body></office:document>')


def main():
    argparse.ArgumentParser(description=__doc__,
                            formatter_class=argparse.RawDescriptionHelpFormatter).parse_args()
    picture = HERE / "letterhead.png"
    subprocess.run(["rsvg-convert", "--width", str(PICTURE_WIDTH * PIXELS_PER_POINT),
                    str(HERE / "letterhead.svg"), "--output", str(picture)], check=True)
    with tempfile.TemporaryDirectory() as work:
        source = pathlib.Path(work) / "DAVO_Header.fods"
        source.write_text(document(picture.read_bytes()), encoding="utf-8")
        subprocess.run(["soffice", f"-env:UserInstallation=file://{work}/profile", "--headless",
                        "--convert-to", "xls:MS Excel 97", "--outdir", str(HERE), str(source)],
                       check=True)


if __name__ == "__main__":
    main()
