# SPDX-License-Identifier: GPL-3.0-or-later
"""The documents of the repository hold together: what they link to and name is there."""

import pathlib
import re
import sys
import unittest

SOURCES = pathlib.Path(__file__).resolve().parents[2]
# A path in a document begins with one of these folders; "build/" is not there before a build.
FOLDERS = "bench|cmake|docs|fuzz|instrument|packaging|src|tests|tools"


def documents():
    return [*SOURCES.glob("*.md"), *(SOURCES / "docs").rglob("*.md")]


def without_code(text):
    return re.sub(r"^```.*?^```", "", text, flags=re.S | re.M)


class Documents(unittest.TestCase):
    maxDiff = None

    def test_every_link_leads_to_a_file_and_a_place_in_it(self):
        broken = []
        links = 0
        for page in documents():
            for link in re.findall(r"\]\(([^)\s]+)\)", without_code(page.read_text("utf-8"))):
                name, _, anchor = link.partition("#")
                # Those of the guide are taken by a build; another test holds them.
                if re.match(r"https?://", link) or name.startswith("pictures/"):
                    continue
                links += 1
                target = page.parent / name if name else page
                if not target.exists():
                    broken.append(f"{page.relative_to(SOURCES)}: {link}")
                elif anchor and f"{{#{anchor}" not in target.read_text("utf-8"):
                    broken.append(f"{page.relative_to(SOURCES)}: {link}")
        self.assertGreater(links, 50)
        self.assertEqual(broken, [])

    def test_every_path_that_is_named_is_there(self):
        missing = []
        paths = 0
        for page in documents():
            text = re.sub(r"^```$|^```\w*$", "", page.read_text("utf-8"), flags=re.M)
            for path in re.findall(rf"(?<![\w/.])((?:{FOLDERS})/[\w./*-]*)", text):
                paths += 1
                path = path.rstrip("./")
                found = any(SOURCES.glob(path)) if "*" in path else (SOURCES / path).exists()
                if not found:
                    missing.append(f"{page.relative_to(SOURCES)}: {path}")
        self.assertGreater(paths, 20)
        self.assertEqual(missing, [])

    def test_the_architecture_names_every_folder_of_the_sources(self):
        text = (SOURCES / "ARCHITECTURE.md").read_text("utf-8")
        folders = {path.parent.relative_to(SOURCES / "src") for path in (SOURCES / "src").rglob("*.cpp")}
        rooms = {folder.name for folder in folders}
        self.assertGreater(len(rooms), 10)
        self.assertEqual(sorted(room for room in rooms if not re.search(rf"\b{room}/", text)), [])


if __name__ == "__main__":
    sys.exit(unittest.main())
