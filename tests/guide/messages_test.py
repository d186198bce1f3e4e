"""Every text that the program can show stands in the guide, word for word, blanks and all."""

import pathlib
import re
import sys
import unittest

from program_texts import constants, program_texts

HERE = pathlib.Path(__file__).parent
ROOT = HERE.parents[1]


def guide_text():
    return "\n".join(page.read_text("utf-8") for page in sorted((ROOT / "docs/guide").glob("*.md")))


def no_messages():
    """The constants that are no messages: captions, lines of files, names, styles."""
    lines = (HERE / "no_messages.txt").read_text("utf-8").splitlines()
    return {line for line in lines if line and not line.startswith("## ")}


def parts(text):
    """What of a text is always the same, line by line; a lone sign or word may be anything."""
    pieces = re.split(r"%\d|[\r\n]+", text.replace("&&", "\0").replace("&", "").replace("\0", "&"))
    return [piece.strip() for piece in pieces if re.search(r"[A-Za-z].*[A-Za-z]", piece)]


class Messages(unittest.TestCase):
    maxDiff = None

    def setUp(self):
        self.texts = program_texts(ROOT / "src")

    def test_every_message_stands_in_the_guide(self):
        guide, left_out = guide_text(), no_messages()
        missing = {
            f"{files[0]}: {text!r}"
            for text, files in self.texts.items()
            if repr(text)[1:-1] not in left_out and any(part not in guide for part in parts(text))
        }
        self.assertEqual(sorted(missing), [])

    def test_what_is_left_out_is_still_in_the_program(self):
        known = {repr(text)[1:-1] for text in self.texts}
        self.assertEqual(sorted(no_messages() - known), [])

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
