# SPDX-License-Identifier: GPL-3.0-or-later
"""Reads the page of all records. read_summary.py hold PAGE ROWS: against rows of tests and the files
that it links to. read_summary.py sort PAGE HEADING,...: the records' names, once these were pressed."""

import csv
import html.parser
import json
import pathlib
import subprocess
import sys
import urllib.parse

VOID = {"meta", "br"}
HEADINGS = {
    "Record": "record", "Test": "test", "Date": "date", "Station": "station", "Circuit": "circuit",
    "SN": "serial_number", "Nameplate": "nameplate_ratio", "Ratio": "measured_ratio",
    "Error": "percent_error", "Polarity": "polarity", "Company": "company", "Mfr": "manufacturer",
    "Model": "model", "Comments": "comments", "Operator": "operator",
}
KNEES = {"IEEE 30": "ieee_30", "IEEE 45": "ieee_45", "ASA 10/50": "asa_10_50"}


class Page(html.parser.HTMLParser):
    def __init__(self, text):
        super().__init__()
        self.open, self.headings, self.rows, self.script, self.curves = [], [], [], "", 0
        self.feed(text)
        assert self.open == [], self.open

    def handle_starttag(self, tag, attributes):
        attributes = dict(attributes)
        if tag not in VOID:
            self.open.append(tag)
        if tag == "th":
            self.headings.append({"text": "", "class": attributes.get("class", "")})
        elif tag == "tr" and "tbody" in self.open:
            self.rows.append([])
        elif tag == "td":
            self.rows[-1].append({"text": "", "key": attributes.get("data-key"), "links": [],
                                  "title": attributes.get("title", "")})
        elif tag == "a" and "td" in self.open:
            self.rows[-1][-1]["links"].append(attributes["href"])
        elif tag == "a":
            self.curves += 1

    def handle_startendtag(self, tag, attributes):
        pass

    def handle_endtag(self, tag):
        assert self.open.pop() == tag, tag

    def handle_data(self, data):
        if self.open and self.open[-1] == "th":
            self.headings[-1]["text"] += data
        elif "td" in self.open:
            self.rows[-1][-1]["text"] += data
        elif self.open and self.open[-1] == "script":
            self.script += data


def hold(path, rows_path):
    page = Page(path.read_text("utf-8"))
    with open(rows_path, encoding="utf-8", newline="") as file:
        rows = list(csv.DictReader(file))
    assert len(rows) == len(page.rows) > 0, (len(rows), len(page.rows))
    names = [heading["text"] for heading in page.headings]
    drawn = sum(1 for row in rows if int(row["points"]) > 0)
    assert page.curves == min(drawn, 400), (page.curves, drawn)
    for row, cells in zip(rows, page.rows):
        shown = dict(zip(names, cells))
        assert len(cells) == len(names)
        for heading, column in HEADINGS.items():
            assert shown[heading]["text"] == row[column].lstrip("'"), (heading, shown, row)
        for heading, column in KNEES.items():
            text, volts = shown[heading]["text"], row[column + "_V"]
            expected = volts if volts in ("0", "N/A") else f"{volts} V, {row[column + '_A']} A"
            assert text.removesuffix(" (?)") == expected, (text, expected)
            assert row[column + "_doubt"] in shown[heading]["title"]
            assert text.endswith("(?)") == (volts not in ("0", "N/A") and row[column + "_doubt"] != "")
        assert shown["Record"]["title"] == row["file"].lstrip("'")
        (link,) = shown["Files"]["links"]
        assert (path.parent / urllib.parse.unquote(link)).stem == row["record"].lstrip("'"), link
        assert (path.parent / urllib.parse.unquote(link)).is_file(), link
    print(f"{len(rows)} rows, {page.curves} curves")


# As much of a browser as the page's script asks for.
BROWSER = """
const body = { rows: [], append(row) { this.rows.splice(this.rows.indexOf(row), 1); this.rows.push(row); } };
const head = { cells: [] };
for (const row of PAGE.rows)
  body.rows.push({ name: row[0].text, cells: row.map(cell =>
    ({ textContent: cell.text, dataset: cell.key === null ? {} : { key: cell.key } })) });
for (const [i, heading] of PAGE.headings.entries())
  head.cells.push({ cellIndex: i, className: heading.class, childNodes: [heading.text], parentNode: head,
    attributes: {}, append(button) { this.button = button; }, closest: () => ({ tBodies: [body] }),
    getAttribute(name) { return this.attributes[name] ?? null; },
    setAttribute(name, value) { this.attributes[name] = value; },
    removeAttribute(name) { delete this.attributes[name]; } });
globalThis.document = { querySelectorAll: () => head.cells,
  createElement: () => ({ text: "", append(text) { this.text += text; } }) };
new Function(PAGE.script)();
for (const press of PRESSES) head.cells.find(cell => cell.button.text === press).button.onclick();
const sorted = head.cells.map(cell => cell.attributes["aria-sort"]).filter(Boolean);
console.log([...body.rows.map(row => row.name), ...sorted].join(" "));
"""


def sort(path, presses):
    page = Page(path.read_text("utf-8"))
    values = {"PAGE": {"rows": page.rows, "headings": page.headings, "script": page.script},
              "PRESSES": [press for press in presses.split(",") if press]}
    script = "".join(f"const {name} = {json.dumps(value)};\n" for name, value in values.items()) + BROWSER
    subprocess.run(["node", "-e", script], check=True)


{"hold": hold, "sort": sort}[sys.argv[1]](pathlib.Path(sys.argv[2]), sys.argv[3])
