# SPDX-License-Identifier: GPL-3.0-or-later
"""What the program takes of the processor while it waits for the operator, place by place.

usage: idle_bench.py [BUILD]: of build/release, or of another build folder.
"""

import os
import pathlib
import sys
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]


def main():
    build = pathlib.Path(sys.argv[1] if len(sys.argv) > 1 else ROOT / "build" / "release").resolve()
    os.environ.setdefault("DAVO_PROGRAM", str(build / "bin" / "davo"))
    os.environ.setdefault("DAVO_INSTRUMENT", str(build / "bin" / "davo-instrument"))
    os.environ.setdefault("DAVO_PLUGINS", str(build / "plugins"))
    os.environ.setdefault("DAVO_KILL_AT_LIBRARY", str(build / "tools" / "davo_kill_at.so"))
    sys.path.insert(0, str(ROOT / "tests" / "end_to_end"))
    import idle_test

    # Long enough for a figure.
    idle_test.SECONDS = 20
    suite = unittest.defaultTestLoader.loadTestsFromModule(idle_test)
    return 0 if unittest.TextTestRunner().run(suite).wasSuccessful() else 1


if __name__ == "__main__":
    sys.exit(main())
