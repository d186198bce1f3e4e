#!/usr/bin/env python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Reads certificates back: every number of the PDF and of the HTML against the workbook's cells,
and those that it has not against the table of records.

usage: certificate_test.py WRITER
"""

import csv
import html.parser
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import unittest

import openpyxl

KNEE_ROWS = (10, 11, 12)
RULES = ("asa_10_50", "ieee_30", "ieee_45")


def output(*command):
    done = subprocess.run(command, check=True, capture_output=True)
    return done.stdout.decode("utf-8")


NEEDS_CHROMIUM = unittest.skipUnless(shutil.which("chromium"), "chromium is not installed")


def chromium(*options):
    return output("chromium", "--headless", "--no-sandbox", "--disable-gpu",
                  f"--user-data-dir={FOLDER}/chromium", *map(str, options))


class Tables(html.parser.HTMLParser):
    """The rows of the tables of results, each a list of its cells' texts without marks."""

    def __init__(self, text):
        super().__init__()
        self.rows, self.marks, self.texts, self.inside = [], [], [], []
        self.feed(text)
        self.rows = [[cell.replace("\xa0", "") for cell in row] for row in self.rows if row]

    def handle_starttag(self, tag, attrs):
        if tag in ("img", "meta", "br"):
            return
        style = (dict(attrs).get("class") or "").split()
        self.inside.append(tag)
        if tag == "tr":
            self.rows.append([])
        if style[:1] == ["cell"] and style[1:]:
            self.rows[-1].append("")
            self.inside[-1] = "cell"

    def handle_endtag(self, tag):
        self.inside.pop()

    def handle_data(self, data):
        if "style" in self.inside:
            return
        self.texts.append(data)
        if self.inside[-1:] == ["sup"]:
            self.marks += [data] if data.strip("\xa0") else []
        elif self.inside[-1:] == ["cell"]:
            self.rows[-1][-1] += data


def cell_text(cell):
    """A workbook's cell as it is shown."""
    if not isinstance(cell.value, (int, float)):
        return cell.value or ""
    decimals = len(cell.number_format.partition(".")[2])
    return f"{cell.value:.{decimals}f}"


def smooth_text(test, rule):
    """The smooth kneepoint of a row of the table of records, as the certificate has it."""
    of = lambda column: test[f"{rule}_smooth_{column}"]
    if of("low_V"):
        return f"{float(of('low_V')):.1f} to {float(of('high_V')):.1f}"
    if not of("V"):
        return "none"
    return f"{float(of('V')):.1f} ± {float(of('pm_V')):.1f}"


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
        results = [row[:1] + row[2:7] + row[8:] for row in page.rows if len(row) == 10]
        knees = [row[:3] + row[5:7] + row[9:11] for row in page.rows if len(row) == 13]
        return results, knees

    def test_html_has_the_smooth_values_and_the_angle_of_the_table_of_records(self):
        for name in ("T1", "T3", "T10", "T31"):
            with open(self.path(name + ".csv"), encoding="utf-8-sig", newline="") as file:
                tests = list({row["test"]: row for row in csv.DictReader(file)}.values())
            page = Tables((FOLDER / (name + ".html")).read_text(encoding="utf-8"))
            angles = [row[7] for row in page.rows if len(row) == 10]
            self.assertEqual(angles, [test["phase_deg"] for test in tests])
            smooth = [[row[3], row[7], row[11]] for row in page.rows if len(row) == 13]
            self.assertEqual(smooth, [[smooth_text(test, rule) for rule in RULES] for test in tests])

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
        for name, most in (("T1", 1), ("T3", 1), ("T10", 3), ("RATIO", 1), ("EMPTY", 1),
                           ("COMPARED1", 1), ("COMPARED3", 2), ("COMPARED10", 3)):
            for paper in ("", "-letter"):
                with self.subTest(name + paper):
                    info = output("pdfinfo", self.path(f"{name}{paper}.pdf"))
                    count = int(re.search(r"Pages:\s+(\d+)", info)[1])
                    self.assertLessEqual(count, most)
                    self.assertIn("letter" if paper else "A4", info)
                    self.assertIn(f"Title:           {name} - Test Certificate", info)
                    self.assertRegex(info,
                        r"(?m)^Author: +" + ("DAVO$" if name == "EMPTY" else r"J\. Doe$"))
                    text = output("pdftotext", self.path(f"{name}{paper}.pdf"), "-")
                    for number in range(1, count + 1):
                        self.assertIn(f"Page {number} of {count}", text)

    @NEEDS_CHROMIUM
    def test_a_phone_shows_the_page_without_moving_it_aside(self):
        for name in ("T1", "T10", "RATIO", "WIDE"):
            frame = FOLDER / f"phone-{name}.htm"
            frame.write_text(f"""<iframe width="390" height="844" src="{name}.html" onload="
                const page = contentDocument, cell = page.querySelector('.results td.w');
                document.title = [page.documentElement.scrollWidth, cell.clientWidth,
                                  cell.scrollWidth]"></iframe>""", encoding="utf-8")
            shown = chromium("--allow-file-access-from-files", "--dump-dom", frame)
            page, cell, text = map(int, re.search(r"<title>(.*?)</title>", shown)[1].split(","))
            self.assertLessEqual(page, 390)
            self.assertLessEqual(text, cell)

    @NEEDS_CHROMIUM
    def test_printed_html_has_the_pages_of_the_pdf(self):
        for name in ("T1", "T3", "T10"):
            for paper in ("", "-letter"):
                printed = self.path(f"printed-{name}{paper}")
                chromium("--no-pdf-header-footer", f"--print-to-pdf={printed}",
                         self.path(f"{name}{paper}.html"))
                with self.subTest(name + paper):
                    pages = lambda path: output("pdftotext", "-layout", path, "-").split("\f")
                    wanted, got = pages(self.path(f"{name}{paper}.pdf")), pages(printed)
                    self.assertEqual(len(got), len(wanted))
                    for page, same in zip(got, wanted):
                        for word in ("Ratio and polarity", "Kneepoints", "Signature"):
                            self.assertEqual(word in page, word in same, word)
                        self.assertEqual(re.findall(r"Page \d+ of \d+", page),
                                         re.findall(r"Page \d+ of \d+", same))

    @NEEDS_CHROMIUM
    def test_long_words_are_broken_and_do_not_make_the_page_small(self):
        chromium("--no-pdf-header-footer", "--print-to-pdf=" + self.path("broken"),
                 self.path("WIDE.html"))
        for path in ("broken", "WIDE.pdf"):
            boxes = output("pdftotext", "-bbox", self.path(path), "-")
            tops = re.findall(r'yMin="(.*?)" .*yMax="(.*?)">(?:Company|Manufacturer)<', boxes)
            self.assertAlmostEqual(float(tops[0][1]) - float(tops[0][0]), 8.5 * 1.117, delta=0.6)
            for word, count in (("D", 70), ("W", 200)):
                broken = re.findall(rf">({word}{{5,}})<", boxes)
                self.assertGreater(len(broken), 1)
                self.assertEqual(sum(map(len, broken)), count)

    def test_rows_are_on_one_page_each_and_the_chart_is_on_the_first(self):
        for count in (1, 3, 10, 31, 100):
            for paper in ("", "-letter"):
                with self.subTest(f"{count}{paper}"):
                    text = output("pdftotext", "-layout", self.path(f"T{count}{paper}.pdf"), "-")
                    pages = text.split("\f")
                    self.assertEqual([i for i, page in enumerate(pages) if "amperes" in page], [0])
                    for i in range(1, count + 1):
                        rows = [line.split()[1:] for line in text.splitlines()
                                if line.split()[:1] == [str(i)] and len(line.split()) > 7 and
                                re.search("PHASE|±|none", line)]
                        self.assertEqual(len(rows), 2, rows)
                        self.assertEqual(text.count(f"tap <{i}>"), 1)
                        # A table that has room on a page is on one.
                    if count <= 10:
                        for heading in ("Ratio and polarity", "Kneepoints"):
                            self.assertEqual(text.count(heading), 1)

    def test_many_headers_leave_the_chart_on_the_first_page(self):
        for paper in ("", "-letter"):
            text = output("pdftotext", "-layout", self.path(f"HEADS{paper}.pdf"), "-")
            pages = text.split("\f")
            self.assertEqual([i for i, page in enumerate(pages) if "amperes" in page], [0])
            self.assertEqual(len(re.findall("Manufacturer +Acme", text)), 12)

    def test_the_frame_of_one_curve_is_two_fifths_of_the_page(self):
        for name, least in (("T1", 0.4), ("T1-letter", 0.4), ("T3", 0.36), ("T3-letter", 0.36)):
            picture = output("pdftocairo", "-svg", "-l", "1", self.path(name + ".pdf"), "-")
            page = [float(x) for x in re.search(r'viewBox="0 0 (\S+) (\S+)"', picture).groups()]
            frames = []
            for path, scale in re.findall(r'd="([^"]*)" transform="matrix\(([\d.]+), ?0, ?0', picture):
                corners = re.fullmatch(r"M (\S+) (\S+) L (\S+) \2 L \3 (\S+) L \1 \4 Z M \1 \2 ",
                                       path)
                if corners:
                    left, top, right, bottom = (float(x) * float(scale) for x in corners.groups())
                    frames.append((right - left) * (bottom - top))
            self.assertEqual(len(frames), 1)
            self.assertGreaterEqual(frames[0] / (page[0] * page[1]), least, name)

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

    def test_a_comparison_is_in_one_piece_with_each_sentence(self):
        for count in (1, 3, 10):
            for paper in ("", "-letter"):
                text = output("pdftotext", "-layout", self.path(f"COMPARED{count}{paper}.pdf"), "-")
                page, = (page for page in text.split("\f") if "Comparison" in page)
                self.assertIn("Reference: T0001 <first>", page)
                for i in range(1, count + 1):
                    self.assertIn(f"Test {i}: At 0.020 A the voltage is 22.7 % below", page)
            self.assertNotIn("Comparison", output("pdftotext", self.path(f"T{count}.pdf"), "-"))

    def test_marks_are_explained(self):
        for name in ("T1", "T3", "T31"):
            source = (FOLDER / (name + ".html")).read_text(encoding="utf-8")
            marks = {int(mark) for mark in Tables(source).marks}
            explained = re.findall(r"<th><sup>(\d+)</sup></th>", source)
            self.assertEqual(sorted(marks), sorted({int(mark) for mark in explained}))
            self.assertLessEqual(len(marks), 5)


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
