# SPDX-License-Identifier: GPL-3.0-or-later
"""The licence is named alike everywhere: in LICENSE, in every source file, in what is packed."""

import pathlib
import sys
import unittest

SOURCES = pathlib.Path(__file__).resolve().parents[2]
FOLDERS = ("bench", "cmake", "docs", "fuzz", "instrument", "packaging", "src", "tests", "tools", ".ci")
SUFFIXES = {".cmake", ".cpp", ".h", ".nsi", ".py", ".rc", ".sh"}
LINE = "SPDX-License-Identifier: GPL-3.0-or-later"
SYSTEM_COPY = pathlib.Path("/usr/share/common-licenses/GPL-3")


def is_source(path):
    suffix = pathlib.PurePath(path.name.removesuffix(".in")).suffix
    if path.name == "CMakeLists.txt" or suffix in SUFFIXES:
        return True
    with path.open("rb") as file:
        return file.read(2) == b"#!"


def sources():
    """Every source file of the repository; what a build leaves is in none of the folders."""
    found = [path for path in SOURCES.iterdir() if path.is_file()]
    for folder in FOLDERS:
        found += [path for path in (SOURCES / folder).rglob("*") if path.is_file()]
    return [path for path in found if "__pycache__" not in path.parts and is_source(path)]


class Licence(unittest.TestCase):
    maxDiff = None

    def test_every_source_file_names_it_in_its_first_lines(self):
        files = sources()
        self.assertGreater(len(files), 400)
        without = []
        for path in files:
            with path.open(encoding="utf-8") as file:
                # A script begins with the program that runs it.
                if not any(LINE in file.readline() for _ in range(2)):
                    without.append(str(path.relative_to(SOURCES)))
        self.assertEqual(sorted(without), [])

    @unittest.skipUnless(SYSTEM_COPY.exists(), f"no {SYSTEM_COPY}")
    def test_the_text_is_the_one_that_the_system_has(self):
        self.assertEqual((SOURCES / "LICENSE").read_bytes(), SYSTEM_COPY.read_bytes())

    def test_the_packages_name_the_same(self):
        metainfo = (SOURCES / "packaging/debian/local.davo.davo.metainfo.xml").read_text("utf-8")
        self.assertIn("<project_license>GPL-3.0-or-later</project_license>", metainfo)
        read_me = " ".join((SOURCES / "packaging/windows/read-me.txt").read_text("utf-8").split())
        self.assertIn("GNU General Public License, version 3", read_me)
        self.assertIn("licences\\GPL-3.txt", read_me)


if __name__ == "__main__":
    sys.exit(unittest.main())
