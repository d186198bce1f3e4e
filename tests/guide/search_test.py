# SPDX-License-Identifier: GPL-3.0-or-later
"""What is searched for in the guide is found, and the guide begins with the reader's platform."""

import html.parser
import json
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import unittest
import urllib.parse

GUIDE = pathlib.Path(os.environ["DAVO_GUIDE"])
ROOT = pathlib.Path(__file__).parents[2]
# What made the guide, and for which platform.
PYTHON = os.environ["DAVO_GUIDE_PYTHON"]
PLATFORM = os.environ["DAVO_PLATFORM"]


# What somebody asks who has never seen the program, and the place that answers it.
QUESTIONS = {
    "how do I install the program": "index.html#install-windows",
    "which com port should I choose": "ports.html#configure",
    "adapter has COM7, number too high": "ports.html#windows",
    "DAVO does not answer": "trouble.html#silent",
    "permission denied ttyUSB0 dialout": "ports.html#linux",
    "how do I start a test": "test.html#before",
    "what happens to my shots when I press Esc": "test.html#leave",
    "repeat a bad shot": "test.html#leave",
    "power failed, where is my test": "trouble.html#kept",
    "percent error has no sign": "test.html#complete",
    "how many tests fit in a report": "limits.html#limits",
    "get records from the memory of the instrument": "retrieval.html#memory",
    "find an old record by serial number": "curves.html#recall",
    "compare with an older test": "curves.html#compare",
    "send the curve by mail as a picture": "curves.html#save",
    "certificate for the customer as PDF": "reports.html#certificate",
    "change the letterhead of the report": "reports.html#letterhead",
    "which kneepoint rule for class PX": "which_kneepoint.html#which",
    "copy records to a USB stick": "files.html#copy",
    "Windows date format changed": "ports.html#date",
    "where are the files saved": "files.html#where",
    "try without an instrument": "try.html#try",
    "uninstall": "ports.html#update",
    "silent install": "ports.html#update",
    "dark mode": "index.html#main",
    "polarity wrong": "trouble.html#symptoms",
    "excel not installed": "trouble.html#symptoms",
    "deleted a record by mistake": "trouble.html#symptoms",
    "why is there a question mark after the kneepoint": "curves.html#doubt",
    "change the station of an old record": "headers.html#saved",
    "TEST Directory": "headers.html#saved",
    "Choose Test Header": "headers.html#choose",
}


# As much of a browser's page as the script of the guide uses.
PAGE = """
const items = %s.map(([link, title, text]) => {
  const parts = {a: {textContent: title}, p: {textContent: text}};
  return {link, parts, querySelector: name => parts[name]};
});
const places = {children: items, replaceChildren(...all) { this.children = all; }};
const field = {value: ""}, line = {textContent: ""}, main = {classList: {add() {}}};
globalThis.location = {search: %s};
globalThis.document = {
  querySelector: name => ({".places": places, "form.search input": field, main})[name],
  getElementById: () => line,
};
"""
SAY = """
({
  links: places.children.map(item => item.link), line: line.textContent, field: field.value,
  piece: places.children.length ? places.children[0].parts.p.textContent : "",
});
"""
# Each page has surroundings of its own.
RUN = """
const vm = require("vm"), pages = JSON.parse(require("fs").readFileSync(0, "utf8"));
console.log(JSON.stringify(pages.map(page => vm.runInNewContext(page, {URLSearchParams}))));
"""


class Index(html.parser.HTMLParser):
    """The entries of the page that is searched: link, title, text."""

    def __init__(self, path):
        super().__init__()
        self.entries, self.within, self.part = [], False, None
        self.feed(path.read_text("utf-8"))

    def handle_starttag(self, tag, attributes):
        attributes = dict(attributes)
        if tag == "ul" and attributes.get("class") == "places":
            self.within = True
        if self.within and tag == "a":
            self.entries.append([attributes["href"], "", ""])
        if tag in ("a", "p", "span"):
            self.part = {"a": 1, "p": 2}.get(tag)

    def handle_endtag(self, tag):
        self.part = None
        if tag == "ul":
            self.within = False

    def handle_data(self, data):
        if self.within and self.part:
            self.entries[-1][self.part] += data


class Search(unittest.TestCase):
    maxDiff = None

    def setUp(self):
        self.entries = Index(GUIDE / "search.html").entries

    def test_every_heading_and_every_message_is_a_place(self):
        places = {link for link, _, _ in self.entries}
        self.assertEqual(len(places), len(self.entries))
        wanted = set()
        for page in GUIDE.glob("*.html"):
            if page.name == "search.html":
                continue
            found = re.findall(r'<(?:h[123]|pre) id="([^"]+)"', page.read_text("utf-8"))
            wanted |= {f"{page.name}#{anchor}" for anchor in found}
        self.assertGreater(len(wanted), 150)
        self.assertEqual(sorted(wanted - places), [])
        self.assertEqual(sorted(places - wanted), [])

    def test_every_page_asks_the_same_page(self):
        for page in GUIDE.glob("*.html"):
            text = page.read_text("utf-8")
            self.assertIn('role="search" action="search.html"', text, page.name)
            self.assertIn('<input type="search" name="q"', text, page.name)

    def all_shown(self, queries):
        """What the page's own script shows of each query: links, the line above them, the field, a piece."""
        if not shutil.which("node"):
            self.skipTest("the script of the page needs node to be tried")
        script = re.search(r"<script>(.*?)</script>", (GUIDE / "search.html").read_text("utf-8"), re.S)[1]
        entries = json.dumps(self.entries)
        addresses = [json.dumps("?" + urllib.parse.urlencode({"q": query})) for query in queries]
        pages = [PAGE % (entries, address) + script + SAY for address in addresses]
        run = subprocess.run(
            ["node", "-e", RUN], input=json.dumps(pages), capture_output=True, text=True, check=True
        )
        return dict(zip(queries, json.loads(run.stdout)))

    def shown(self, query):
        return self.all_shown([query])[query]

    def found(self, query):
        return self.shown(query)["links"]

    def test_the_page_says_what_it_found(self):
        shown = self.shown("dialout xyzzy")
        self.assertEqual((shown["links"], shown["line"]), ([], "0 places have: dialout xyzzy"))
        shown = self.shown("udev PORTDEVICES")
        self.assertEqual(shown["field"], "udev PORTDEVICES")
        self.assertEqual(shown["line"], "1 place has: udev PORTDEVICES")
        shown = self.shown("dialout")
        self.assertIn("dialout", shown["piece"])
        self.assertLess(len(shown["piece"]), 210)
        shown = self.shown("")
        self.assertEqual(len(shown["links"]), len(self.entries), "nothing was asked: the whole index")
        self.assertEqual(shown["line"], "")

    def test_a_question_finds_the_place_that_answers_it(self):
        self.assertGreaterEqual(len(QUESTIONS), 20)
        shown = self.all_shown(list(QUESTIONS))
        missed = {
            question: shown[question]["links"][:4]
            for question, place in QUESTIONS.items()
            if place not in shown[question]["links"][:4]
        }
        self.assertEqual(missed, {})

    def test_where_no_place_has_all_words_those_with_most_are_shown(self):
        shown = self.shown("udev symlink xyzzy")
        self.assertEqual(shown["line"], "1 place has most of: udev symlink xyzzy")
        self.assertEqual(shown["links"], ["ports.html#name"])

    def test_words_of_a_title_come_first(self):
        self.assertEqual(self.found("configure SYSTEM")[0], "ports.html#configure")
        self.assertEqual(self.found("start page")[0], "index.html#main")

    def test_all_words_must_be_there(self):
        found = self.found("dialout  group")
        self.assertIn("ports.html#linux", found)
        for link, title, text in self.entries:
            has = all(word in f"{title} {text}".lower() for word in ("dialout", "group"))
            self.assertEqual(link in found, has, link)
        self.assertEqual(self.found("dialout xyzzy"), [])

    def test_a_message_is_found_by_its_words(self):
        found = self.found("Please choose a valid COM port")
        self.assertRegex(found[0], r"^messages\.html#message-\d+$")


class Platforms(unittest.TestCase):
    def order(self, platform):
        """The headings of a guide for platform that are about one, in their order."""
        with tempfile.TemporaryDirectory() as folder:
            sources = [ROOT / "docs/guide" / name for name in ("index.md", "ports.md")]
            make = [PYTHON, ROOT / "tools/make_guide.py", platform, folder, *sources]
            subprocess.run(make, check=True)
            pages = [pathlib.Path(folder, name).read_text("utf-8") for name in ("index.html", "ports.html")]
        wanted = (r"install-\w+", r"windows|linux")
        return [re.findall(rf'<h[23] id="({ids})"', page) for ids, page in zip(wanted, pages)]

    def test_the_readers_own_comes_first(self):
        self.assertEqual(
            self.order("windows"), [["install-windows", "install-debian"], ["windows", "linux"]]
        )
        self.assertEqual(
            self.order("linux"), [["install-debian", "install-windows"], ["linux", "windows"]]
        )

    def test_this_build_begins_with_its_own(self):
        first = (GUIDE / "index.html").read_text("utf-8")
        self.assertLess(first.index('id="install-'), first.index('id="main"'))
        order = re.findall(r'id="(install-\w+)"', first)
        self.assertEqual(order[0], {"linux": "install-debian", "windows": "install-windows"}[PLATFORM])


if __name__ == "__main__":
    sys.exit(unittest.main())
