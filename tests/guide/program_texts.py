# SPDX-License-Identifier: GPL-3.0-or-later
"""The texts in the program's sources that a person may read: string constants of two words or more."""

import pathlib
import re

# A raw string, a comment, a character, or a string with its prefix; whatever comes first counts.
TOKEN = re.compile(
    r'R"(?P<mark>[^(\s]*)\((?P<raw>.*?)\)(?P=mark)"'
    r"|//[^\n]*|/\*.*?\*/"
    r"|'(?:[^'\\\n]|\\.)+'"
    r'|"(?P<text>(?:[^"\\\n]|\\.)*)"',
    re.S,
)
ESCAPES = {"n": "\n", "r": "\r", "t": "\t", '"': '"', "\\": "\\", "0": "\0", "'": "'"}
# A text that somebody reads has two words.
WORDS = re.compile(r"[A-Za-z'.,:;!?)]{2,} +[(A-Za-z'\"%]{1,}")


def plain(text):
    text = re.sub(r"\\x([0-9A-Fa-f]{2})", lambda m: chr(int(m[1], 16)), text)
    return re.sub(r"\\(.)", lambda m: ESCAPES.get(m[1], m[0]), text)


def constants(source):
    """The string constants of a C++ source; those that are side by side are one, as in C++."""
    source = re.sub(r"^[ \t]*#[ \t]*(include|pragma)[^\n]*", "", source, flags=re.M)
    found, end, joined = [], None, False
    for token in TOKEN.finditer(source):
        text = token["raw"] if token["raw"] is not None else token["text"]
        between = source[end : token.start()] if end is not None else "x"
        if text is None:
            # A comment between two constants does not part them.
            if token[0].startswith("/") and end is not None and not between.strip():
                end = token.end()
            else:
                end = None
            continue
        text = text if token["raw"] is not None else plain(text)
        if end is not None and not between.strip():
            found[-1] += text
        else:
            found.append(text)
        end = token.end()
    return found


def program_texts(folder):
    """{text: [files]} of all constants with two words or more below folder."""
    texts = {}
    for path in sorted(pathlib.Path(folder).rglob("*")):
        if path.suffix not in (".cpp", ".h"):
            continue
        for text in constants(path.read_text("utf-8")):
            if WORDS.search(text):
                texts.setdefault(text, []).append(path.relative_to(folder).as_posix())
    return texts
