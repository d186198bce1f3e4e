# SPDX-License-Identifier: GPL-3.0-or-later
"""The documents, the man pages and the program's own messages use plain words (tools/plain_words.txt)."""

import pathlib
import re
import sys
import unittest

from program_texts import program_texts

ROOT = pathlib.Path(__file__).parents[2]
LIST = ROOT / "tools/plain_words.txt"
# Things are, have and show, in comments too.
THINGS = [(re.compile(r"\b(lies?|lain|stands?|stood|bears?)\b", re.I), "is, has")]
EXEMPT = "## Texts that the system fixes"


def patterns():
    """The patterns of the list, each with the plainer words."""
    lines = LIST.read_text("utf-8").split(EXEMPT)[0].splitlines()
    pairs = [line.split("\t") for line in lines if line and not line.startswith("#")]
    return [(re.compile(pattern, re.I), better) for pattern, better in pairs]


def fixed_texts():
    return [line for line in LIST.read_text("utf-8").split(EXEMPT)[1].splitlines() if line]


def documents():
    yield from sorted((ROOT / "docs").rglob("*.md"))
    yield from (ROOT / name for name in ("README.md", "ARCHITECTURE.md", "CONTRIBUTING.md"))
    yield from sorted((ROOT / "packaging/debian").glob("*.1.in"))
    yield ROOT / "packaging/debian/local.davo.davo.metainfo.xml"
    yield from (ROOT / "packaging/windows" / name for name in ("read-me.txt", "installer.nsi"))


def sources():
    for folder in ("bench", "cmake", "fuzz", "instrument", "packaging", "src", "tests", "tools"):
        for path in sorted((ROOT / folder).rglob("*")):
            ours = path.suffix in (".cmake", ".cpp", ".h", ".py") or path.name == "CMakeLists.txt"
            script = not path.suffix and folder in ("packaging", "tools") and path.is_file()
            if (ours or script) and path != pathlib.Path(__file__):
                yield path
    yield from (ROOT / name for name in ("CMakeLists.txt", "run", "test"))


def found(text, known):
    """What of the list is in a text, with the words around it and what to write."""
    text = " ".join(text.split())
    for fixed in fixed_texts():
        text = text.replace(" ".join(fixed.split()), "")
    return [
        f"...{text[max(0, match.start() - 30):match.end() + 20]}... -> {better}"
        for pattern, better in known
        for match in pattern.finditer(text)
    ]


class Words(unittest.TestCase):
    maxDiff = None

    def setUp(self):
        self.known = patterns()

    def test_the_sources_use_plain_words_for_things(self):
        files = list(sources())
        self.assertGreater(len(files), 500)
        self.assertEqual(
            [f"{path.relative_to(ROOT)}: {one}" for path in files
             for one in found(path.read_text("utf-8", "replace"), THINGS)],
            [],
        )

    def test_the_documents_use_plain_words(self):
        pages = list(documents())
        self.assertGreater(len(pages), 25)
        self.assertEqual(
            [f"{page.name}: {one}" for page in pages for one in found(page.read_text("utf-8"), self.known)],
            [],
        )

    def test_the_programs_messages_use_plain_words(self):
        texts = program_texts(ROOT / "src")
        self.assertGreater(len(texts), 300)
        self.assertEqual(
            [f"{texts[text][0]}: {one}" for text in texts for one in found(text, self.known)], []
        )

    def test_the_list_finds_what_it_is_for(self):
        for text in ("The message stands in the box.", "The file\nlies here.", "It is saved all the same.",
                     "the end of the list of the records", "This is said.", "It shall be so."):
            self.assertNotEqual(found(text, self.known), [], text)
        self.assertEqual(found("A whole number behind a link.", self.known), [])
        self.assertEqual(found("The record ‹name› shall be overwritten!", self.known), [])

    def test_what_the_system_fixes_is_in_the_program_or_the_guide(self):
        texts = program_texts(ROOT / "src")
        page = (ROOT / "docs/guide/messages.md").read_text("utf-8")
        self.assertEqual([text for text in fixed_texts() if text not in texts and text not in page], [])


if __name__ == "__main__":
    sys.exit(unittest.main())
