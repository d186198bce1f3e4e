#!/usr/bin/env python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Reads certificates back: every number of the PDF and of the HTML against the workbook's cells.

usage: certificate_test.py WRITER
"""

import html.parser
import pathlib
import re
import subprocess
import sys
import tempfile
import unittest

import openpyxl

KNEE_ROWS = (10, 11, 12)


def output(*command):
    return subprocess.run(command, check=True, capture_output=True).stdout.decode("utf-8")


class Tables(html.parser.HTMLParser):
    """The rows of all tables, each a list of its cells' texts; marks are left out."""

    def __init__(self, text):
        super().__init__()
        self.rows, self.marks, self.texts, self.inside = [], [], [], []
        self.feed(text)

    def handle_starttag(self, tag, attrs):
        if tag in ("tr", "td", "sup", "thead", "style"):
            self.inside.append(tag)
        if tag == "tr":
            self.rows.append([])
        if tag == "td":
            self.rows[-1].append("")

    def handle_endtag(self, tag):
        if self.inside and self.inside[-1] == tag:
            self.inside.pop()

    def handle_data(self, data):
        if "style" in self.inside:
            return
        self.texts.append(data)
        if self.inside[-1:] == ["sup"]:
            self.marks.append(data)
        elif self.inside[-1:] == ["td"]:
            self.rows[-1][-1] += data


def cell_text(cell):
    """A workbook's cell as it is shown."""
    if not isinstance(cell.value, (int, float)):
        return cell.value or ""
    decimals = len(cell.number_format.partition(".")[2])
    return f"{cell.value:.{decimals}f}"


def expected_rows(path):
    """What the certificate's two tables have of each test of a workbook; smooth curves are not in it."""
    results, knees = [], []
    for sheet in openpyxl.load_workbook(path).worksheets:
        if not sheet.title.endswith("-Graph"):
            continue
        at = lambda address: cell_text(sheet[address])
        results.append([at("B6"), at("B13"), at("D13"), at("B15").removesuffix("%"), at("B14"),
                        at("D14"), at("B16"), at("D16")])
        knees.append([at("B6")] + [at(f"{column}{row}") for row in KNEE_ROWS for column in "BD"])
    return results, knees


class Certificate(unittest.TestCase):
    def setUp(self):
        self.maxDiff = None

    def path(self, name):
        return str(FOLDER / name)

    def rows_of_html(self, name):
        page = Tables((FOLDER / name).read_text(encoding="utf-8"))
        rows = [row for row in page.rows if row and any(row)]
        results = [row[:1] + row[2:7] + row[8:] for row in rows if len(row) == 10 and
                   not re.search("±| to |none", " ".join(row))]
        knees = [row[:3] + row[4:6] + row[7:9] for row in rows if len(row) == 10 and
                 re.search("±| to |none", " ".join(row))]
        return results, knees

    def test_html_has_the_numbers_of_the_workbook(self):
        for name in ("T1", "T3", "T10", "T31"):
            with self.subTest(name):
                self.assertEqual(self.rows_of_html(name + ".html"),
                                 expected_rows(self.path(name + ".xlsx")))
        results, knees = self.rows_of_html("RATIO.html")
        self.assertEqual(results, expected_rows(self.path("RATIO.xlsx"))[0])
        self.assertEqual(knees, [])

    def test_pdf_has_the_numbers_of_the_workbook(self):
        for name in ("T1", "T3", "T10", "T31"):
            with self.subTest(name):
                words = output("pdftotext", "-layout", self.path(name + ".pdf"), "-")
                lines = [re.split(r"\s{2,}", line.strip()) for line in words.splitlines()]
                for table in expected_rows(self.path(name + ".xlsx")):
                    for row in table:
                        wanted = " ".join(" ".join(row).split())
                        self.assertTrue(any(contains_all(line, row) for line in lines), wanted)

    def test_pages(self):
        for name, pages in (("T1", 1), ("T10", 3), ("RATIO", 1)):
            for paper in ("", "-letter"):
                with self.subTest(name + paper):
                    info = output("pdfinfo", self.path(f"{name}{paper}.pdf"))
                    count = int(re.search(r"Pages:\s+(\d+)", info)[1])
                    self.assertLessEqual(count, pages)
                    self.assertIn("letter" if paper else "A4", info)
                    self.assertIn(f"Title:           {name} - Test Certificate", info)
                    self.assertRegex(info, r"(?m)^Author: +J\. Doe$")
                    text = output("pdftotext", self.path(f"{name}{paper}.pdf"), "-")
                    for number in range(1, count + 1):
                        self.assertIn(f"Page {number} of {count}", text)
                    source = (FOLDER / f"{name}{paper}.html").read_text(encoding="utf-8")
                    self.assertEqual(source.count("<section>"), count)

    def test_a_page_has_the_words_of_its_chart_and_a_margin(self):
        for paper in ("", "-letter"):
            path = self.path(f"T3{paper}.pdf")
            words = output("pdftotext", "-layout", path, "-")
            for word in ("Current in amperes", "Voltage in volts", "Kneepoint by", "Test 3", "0.1"):
                self.assertIn(word, words)
            boxes = output("pdftotext", "-bbox", path, "-")
            for page in boxes.split("<page ")[1:]:
                width, height = map(float, re.match(r'width="(.*?)" height="(.*?)"', page).groups())
                found = re.findall(r'<word xMin="(.*?)" yMin="(.*?)" xMax="(.*?)" yMax="(.*?)"', page)
                self.assertGreater(len(found), 8)
                for box in found:
                    left, top, right, bottom = map(float, box)
                    # A printer does not reach the edge.
                    self.assertGreaterEqual(min(left, top, width - right, height - bottom), 25, box)

    def test_fonts_are_embedded(self):
        for path in FOLDER.glob("*.pdf"):
            fonts = output("pdffonts", str(path)).splitlines()[2:]
            self.assertTrue(fonts)
            for font in fonts:
                self.assertEqual(font.split()[-5], "yes", font)

    def test_html_is_valid(self):
        for path in FOLDER.glob("*.html"):
            with self.subTest(path.name):
                tidy = subprocess.run(["tidy", "-q", "-e", "--warn-proprietary-attributes", "no",
                                       str(path)], capture_output=True, text=True, check=False)
                self.assertEqual(tidy.stderr, "")
            self.assertNotIn("<script", path.read_text(encoding="utf-8"))

    def test_texts_are_as_they_are(self):
        source = (FOLDER / "T1.html").read_text(encoding="utf-8")
        self.assertIn("Köln <&\"'>", "".join(Tables(source).texts))
        self.assertNotIn("Köln <", source)
        self.assertIn("Köln <&\"'>", output("pdftotext", self.path("T1.pdf"), "-"))

    def test_long_notes_go_on_over_pages(self):
        text = output("pdftotext", "-layout", self.path("NOTES.pdf"), "-")
        for number in range(1, 151):
            self.assertIn(f"Line {number} of <long> & \"quoted\" notes ü", text)
        self.assertGreater(text.count("Page "), 2)

    def test_ratio_tests_have_no_chart(self):
        self.assertNotIn("<svg", (FOLDER / "RATIO.html").read_text(encoding="utf-8"))
        self.assertNotIn("amperes", output("pdftotext", self.path("RATIO.pdf"), "-"))

    def test_marks_are_explained(self):
        for name in ("T1", "T3", "T31"):
            source = (FOLDER / (name + ".html")).read_text(encoding="utf-8")
            marks = {int(mark) for mark in Tables(source).marks}
            self.assertEqual(marks, set(range(1, source.count("<li>") + 1)))


def contains_all(line, row):
    """Whether a line of cells has those of row, in order; a mark may be behind a number."""
    words = " ".join(line)
    at = 0
    for text in row:
        if not text:
            continue
        at = words.find(text, at)
        if at < 0:
            return False
        at += len(text)
    return words.startswith(row[0])


if __name__ == "__main__":
    with tempfile.TemporaryDirectory() as folder:
        FOLDER = pathlib.Path(folder)
        subprocess.run([sys.argv.pop(1), folder], check=True)
        unittest.main(argv=sys.argv)
