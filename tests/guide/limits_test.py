# SPDX-License-Identifier: GPL-3.0-or-later
"""The guide's table of limits has the numbers of the sources, and names each of them."""

import pathlib
import re
import sys
import unittest

ROOT = pathlib.Path(__file__).parents[2]
PAGE = ROOT / "docs/guide/limits.md"

# A row of the table, by how its first cell begins: the source of its number and the constant there.
LIMITS = {
    "points of a test": ("records/record_image.h", "kPointSlots"),
    "shots of a session": ("testing/shot_sequence.h", "kShotRefusal"),
    "tests in a report": ("analysis/result_tables.h", "kKneeSlots"),
    "tests of a record in the record panel": ("reports/record_facts.h", "kMostFactTests"),
    "tests of a record in the editor": ("files/record_headers.h", "kMostTests"),
    "records in a list of the data folder": ("records/directory_file.h", "kMostListedRecords"),
    "records in a list of the DAVO's memory": ("retrieval/memory_directory.h", "kMostMemoryRecords"),
    "records in one copy": ("files/record_names.h", "kMostSelected"),
    "records in the record panel": ("curves/record_panel.h", "kMostShownRecords"),
    "characters of a header field": ("records/header_table.h", "kHeaderFieldWidth"),
    "characters of a record's name": ("records/record_name.cpp", "kLongestName"),
    "voltage that the DAVO gives": ("analysis/taps.cpp", "kHighestVoltage"),
}


def rows():
    """{first cell: second cell} of the table of limits."""
    table = PAGE.read_text("utf-8").split("{#limits}")[1]
    cells = re.findall(r"^\| ([^|]+) \| ([^|]+) \|", table, re.M)
    return {what: limit.strip() for what, limit in cells if limit.strip("- ") and what != "what"}


class Limits(unittest.TestCase):
    def test_each_row_has_the_number_of_the_source(self):
        table = rows()
        for begins, (source, name) in LIMITS.items():
            found = [limit for what, limit in table.items() if what.startswith(begins)]
            text = (ROOT / "src" / source).read_text("utf-8")
            value = re.search(rf"\b{name} *= *(\d+);", text)[1]
            self.assertEqual([limit.removesuffix(" V") for limit in found], [value], begins)

    def test_no_other_number_is_in_the_table(self):
        others = [what for what in rows() if not any(what.startswith(begins) for begins in LIMITS)]
        # It is what the grid of a report has: tests/analysis asks for its refusal.
        self.assertEqual(others, ["current of a point in a report"])

    def test_other_pages_have_no_other_number(self):
        """Where a page names a limit it is that of the table."""
        pages = {path.name: path.read_text("utf-8") for path in PAGE.parent.glob("*.md")}
        table = rows()
        for pattern, begins in (
            (r"holds (\d+) shots", "shots of a session"),
            (r"(?:report takes|workbook has) at most (\d+) tests", "tests in a report"),
            (r"shows (\d+); the window", "records in a list of the DAVO's memory"),
            (r"has (\d+) characters", "characters of a header field"),
        ):
            value = next(limit for what, limit in table.items() if what.startswith(begins))
            found = {name: set(re.findall(pattern, text)) for name, text in pages.items()}
            found = {name: numbers for name, numbers in found.items() if numbers}
            self.assertTrue(found, pattern)
            self.assertEqual({name: {value} for name in found}, found, pattern)


if __name__ == "__main__":
    sys.exit(unittest.main())
