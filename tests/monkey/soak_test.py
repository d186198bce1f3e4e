# SPDX-License-Identifier: GPL-3.0-or-later
"""A short soak: the whole takes half an hour (soak.py)."""

import os
import sys
import unittest

import soak


class Soak(unittest.TestCase):
    @unittest.skipUnless("DAVO_LONG" in os.environ, "DAVO_LONG is not set")
    def test_some_rounds_lose_no_shot_and_leave_nothing_behind(self):
        self.assertEqual(soak.main(["--shots", "25"]), 0)


if __name__ == "__main__":
    sys.exit(unittest.main())
