# SPDX-License-Identifier: GPL-3.0-or-later
"""The guide's pages hold together: links, anchors, windows. DAVO_GUIDE names their folder."""

import html
import html.parser
import os
import pathlib
import re
import sys
import unittest

GUIDE = pathlib.Path(os.environ["DAVO_GUIDE"])
SOURCES = pathlib.Path(__file__).parents[2] / "src"
# Those of the prompts (src/ui/dialog_prompts.h).
DIALOGS = {"msgBox", "inputBox", "cdFile", "folderBrowser"}


class PageReader(html.parser.HTMLParser):
    def __init__(self, path):
        super().__init__()
        self.ids, self.links, self.pictures, self.fetched, self.broken = [], [], [], [], []
        self.feed(path.read_text("utf-8"))

    def handle_starttag(self, tag, attributes):
        attributes = dict(attributes)
        if "id" in attributes:
            self.ids.append(attributes["id"])
        if tag == "a":
            self.links.append(attributes["href"])
        if tag == "img":
            self.pictures.append((attributes["src"], attributes.get("alt", "")))
            if attributes.get("onerror") != "this.remove()":
                self.broken.append(attributes["src"])
        elif "src" in attributes or tag == "link":
            self.fetched.append(tag)
        if attributes.get("http-equiv") == "refresh":
            self.links.append(attributes["content"].partition("url=")[2])


class Links(unittest.TestCase):
    maxDiff = None

    def setUp(self):
        self.pages = {path.resolve(): PageReader(path) for path in GUIDE.rglob("*.html")}
        self.assertIn((GUIDE / "index.html").resolve(), self.pages)

    def test_every_link_leads_to_a_page_and_a_place_in_it(self):
        broken = []
        for path, page in self.pages.items():
            for link in page.links:
                if re.match(r"https?://", link):
                    continue
                name, _, anchor = link.partition("#")
                target = (path.parent / name).resolve() if name else path
                if target not in self.pages or (anchor and anchor not in self.pages[target].ids):
                    broken.append(f"{path.name}: {link}")
        self.assertEqual(broken, [])

    def test_a_place_has_one_name(self):
        for path, page in self.pages.items():
            self.assertEqual(len(page.ids), len(set(page.ids)), path.name)

    def test_every_page_is_in_the_contents_and_fetches_nothing(self):
        first = self.pages[(GUIDE / "index.html").resolve()]
        for path, page in self.pages.items():
            self.assertEqual(page.fetched, [], path.name)
            if path.parent == GUIDE.resolve():
                self.assertIn(path.name, first.links)
                self.assertNotRegex(path.read_text("utf-8"), r"url\(|@import")

    def test_pictures_are_named_and_lie_in_one_folder(self):
        for path, page in self.pages.items():
            for source, words in page.pictures:
                self.assertRegex(source, r"^pictures/[a-z0-9-]+\.png$", path.name)
                self.assertGreater(len(words), 3, f"{path.name}: {source} has no words")

    def test_a_picture_that_is_not_there_is_not_shown_as_a_broken_one(self):
        shown = [source for page in self.pages.values() for source, _ in page.pictures]
        self.assertGreater(len(shown), 15)
        self.assertEqual([page.broken for page in self.pages.values() if page.broken], [])

    def test_the_pictures_that_were_taken_are_all_there_and_whole(self):
        if not (GUIDE / "pictures").exists():
            self.skipTest("guide_pictures has not taken the pictures of this build yet")
        for source in sorted({source for page in self.pages.values() for source, _ in page.pictures}):
            picture = (GUIDE / source).read_bytes()
            self.assertTrue(picture.startswith(b"\x89PNG\r\n\x1a\n"), source)
            self.assertTrue(picture.endswith(b"IEND\xaeB`\x82"), source)

    def test_every_window_has_its_place(self):
        classes = set()
        for header in SOURCES.rglob("*.h"):
            classes.update(re.findall(r"^class (frm\w+) (?:final )?:", header.read_text("utf-8"), re.M))
        self.assertIn("frmCControl", classes)
        places = {path.stem for path in (GUIDE / "f1").glob("*.html")}
        self.assertEqual(sorted((classes | DIALOGS) - places), [])

    def test_every_place_is_that_of_a_window(self):
        sources = "\n".join(path.read_text("utf-8") for path in SOURCES.rglob("*.cpp"))
        names = {path.stem for path in (GUIDE / "f1").glob("*.html")}
        names = {name for name in names if not name.startswith("message-")}
        self.assertEqual(sorted(name for name in names if f'"{name}"' not in sources), [])

    def test_every_message_is_found_at_its_own_place(self):
        lines = (GUIDE / "f1" / "messages.txt").read_text("utf-8").splitlines()
        page = (GUIDE / "messages.html").read_text("utf-8")
        words = " ".join(html.unescape(re.sub(r"<[^>]*>", "", page)).split()).lower()
        found = {}
        for line in lines:
            place, part, advice = line.split("\t")
            self.assertTrue((GUIDE / "f1" / f"{place}.html").exists(), place)
            self.assertIn(f'id="{place}"', page)
            # The sentence in the message box is the one on the page.
            self.assertIn(advice[:-1].lower(), words)
            self.assertRegex(advice, r"^[A-Z.].*[.?:]$", place)
            found.setdefault(part, set()).add(place)
        self.assertGreater(len(found), 100)
        twice = sorted(part for part, places in found.items() if len(places) > 1)
        self.assertEqual(twice, [])

    def test_a_message_of_three_words_or_fewer_is_found_too(self):
        lines = (GUIDE / "f1" / "messages.txt").read_text("utf-8").splitlines()
        found = {line.split("\t")[1] for line in lines}
        page = (GUIDE / "messages.html").read_text("utf-8")
        blocks = re.findall(r'<pre id="message-\d+"><code>([^<]*)</code>', page)
        short = {
            line
            for block in blocks
            for line in html.unescape(block).splitlines()
            if 0 < len(line.split()) <= 3 and "‹" not in line
        }
        self.assertLessEqual({"Data Lost", "Receive buffer overflow", "Buffer to big!"}, short)
        # A word within a message, and what the status line says of two things.
        self.assertEqual(sorted(short - found), ["Setting not usable", "or"])

    def test_the_index_of_messages_leads_to_each(self):
        page = (GUIDE / "messages.html").read_text("utf-8")
        index = page.split('<ul class="a-to-z">')[1].split("</ul>")[0]
        leads = set(re.findall(r'href="#(message-[^"]+)"', index))
        blocks = re.findall(r'<pre id="(message-\d+)"><code>([^<]*)</code>', page)
        texts = {place: html.unescape(text) for place, text in blocks}
        self.assertGreater(len(leads), 150)
        # Those that begin with a name have no letter to be found by.
        left = {place: text for place, text in texts.items() if place not in leads}
        self.assertEqual({p: t for p, t in left.items() if re.match(r"[A-Z]", t)}, {})
        self.assertLess(len(left), 12)


if __name__ == "__main__":
    sys.exit(unittest.main())
