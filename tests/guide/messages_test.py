# SPDX-License-Identifier: GPL-3.0-or-later
"""Every message that the program can show is on the guide's page of messages, word for word.

Each constant of two words or more in the sources is a message, unless no_messages.txt names it."""

import pathlib
import re
import sys
import unittest

from program_texts import constants, program_texts

HERE = pathlib.Path(__file__).parent
ROOT = HERE.parents[1]


GUIDE = ROOT / "docs/guide"
ON_OTHER_PAGES = "## named on other pages of the guide"
# The number and the text of each error, as the sources have them.
NUMBER = re.compile(r"^    (\w+) = (\d+),$", re.M)
ERROR_TEXT = re.compile(r'\{ErrorNumber::(\w+), "([^"]+)"\}')


def page(name):
    return (GUIDE / name).read_text("utf-8")


def no_messages():
    """The constants that are no messages, and of them those that other pages of the guide name."""
    lines = (HERE / "no_messages.txt").read_text("utf-8").splitlines()
    others = lines.index(ON_OTHER_PAGES)
    texts = [{line for line in part if line and not line.startswith("## ")}
             for part in (lines[:others], lines[others:])]
    return texts[0] | texts[1], texts[1]


def written(text):
    """A constant as no_messages.txt writes it."""
    return repr(text)[1:-1]


def parts(text):
    """What of a text is always the same, line by line; a lone sign or word may be anything."""
    pieces = re.split(r"%\d|[\r\n]+", text.replace("&&", "\0").replace("&", "").replace("\0", "&"))
    return [piece.strip() for piece in pieces if re.search(r"[A-Za-z].*[A-Za-z]", piece)]


class Messages(unittest.TestCase):
    maxDiff = None

    def setUp(self):
        self.texts = program_texts(ROOT / "src")

    def missing(self, text, texts):
        """Those of the program's texts that are not in text, each with its file."""
        return sorted(
            f"{self.texts[each][0]}: {each!r}"
            for each in texts
            if any(part not in text for part in parts(each))
        )

    def test_every_message_is_on_the_page_of_messages(self):
        left_out = no_messages()[0]
        messages = [text for text in self.texts if written(text) not in left_out]
        self.assertGreater(len(messages), 150)
        self.assertEqual(self.missing(page("messages.md"), messages), [])

    def test_what_other_pages_name_is_there(self):
        others = "\n".join(page(path.name) for path in sorted(GUIDE.glob("*.md")))
        named = no_messages()[1]
        self.assertEqual(self.missing(others, [t for t in self.texts if written(t) in named]), [])

    def test_what_is_left_out_is_still_in_the_program(self):
        known = {written(text) for text in self.texts}
        self.assertEqual(sorted(no_messages()[0] - known), [])

    def test_every_error_has_a_line_in_the_table_of_errors(self):
        numbers = dict(NUMBER.findall((ROOT / "src/common/run_time_error.h").read_text("utf-8")))
        texts = dict(ERROR_TEXT.findall((ROOT / "src/common/run_time_error.cpp").read_text("utf-8")))
        self.assertEqual(numbers.keys(), texts.keys())
        self.assertGreater(len(numbers), 15)
        rows = page("messages.md")
        for name, number in numbers.items():
            self.assertRegex(rows, rf"(?m)^\| {number} \| `{re.escape(texts[name])}` \| \S.* \|$")

    def test_the_texts_are_collected(self):
        for text in (
            "Do You Want to Exit?",
            "DAVO is not available\r\nor\r\nnot under computer control.",
            "%1 of %2 records were saved.",
            "You have ran the maximum limit (100) of shots.",
        ):
            self.assertIn(text, self.texts)

    def test_constants_are_read_as_the_compiler_reads_them(self):
        source = """#include "no such text"
            f("one two" // "not this"
              " three\\r\\n", 'a', '"', R"(raw \\ "text")", "x\\"y");"""
        self.assertEqual(constants(source), ["one two three\r\n", 'raw \\ "text"', 'x"y'])


if __name__ == "__main__":
    sys.exit(unittest.main())
