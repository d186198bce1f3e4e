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
console.log(JSON.stringify({
  links: places.children.map(item => item.link), line: line.textContent, field: field.value,
  piece: places.children.length ? places.children[0].parts.p.textContent : "",
}));
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

    def shown(self, query):
        """What the page's own script shows of query: links, the line above them, the field, a piece."""
        if not shutil.which("node"):
            self.skipTest("the script of the page needs node to be tried")
        script = re.search(r"<script>(.*?)</script>", (GUIDE / "search.html").read_text("utf-8"), re.S)[1]
        address = "?" + urllib.parse.urlencode({"q": query})
        page = PAGE % (json.dumps(self.entries), json.dumps(address))
        run = subprocess.run(["node", "-e", page + script + SAY], capture_output=True, text=True, check=True)
        return json.loads(run.stdout)

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
        self.assertLess(first.index('id="install"'), first.index('id="try"'))
        order = re.findall(r'id="(install-\w+)"', first)
        self.assertEqual(order[0], {"linux": "install-debian", "windows": "install-windows"}[PLATFORM])


if __name__ == "__main__":
    sys.exit(unittest.main())
