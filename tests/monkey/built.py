# SPDX-License-Identifier: GPL-3.0-or-later
"""Imported first: where a run by hand finds the programs, in build/release."""

import os
import pathlib
import sys

HERE = pathlib.Path(__file__).resolve().parent
BUILD = HERE.parents[1] / "build" / "release"

sys.path[:0] = [str(HERE.parent / "end_to_end"), str(HERE)]
for name, place in (("PROGRAM", "bin/davo"), ("INSTRUMENT", "bin/davo-instrument"),
                    ("PLUGINS", "plugins")):
    os.environ.setdefault("DAVO_" + name, str(BUILD / place))
