# SPDX-License-Identifier: GPL-3.0-or-later
"""Shows all windows on the screens that technicians have, and lets no text be cut off.

One of the screens, picked at random, is looked at; each of them when DAVO_LONG is set. The seed is
printed, and DAVO_SEED repeats the choice.
"""

import concurrent.futures
import json
import os
import pathlib
import random
import subprocess
import sys
import tempfile
import unittest

PICTURES = os.environ["DAVO_PICTURES"]
FEWEST_PICTURES = 60
# Width and height in pixels, scale, size of the letters in points.
SCREENS = [(1366, 768, 1, 10), (1024, 600, 1, 10), (1920, 1080, 1.5, 10), (1366, 768, 1, 14),
           (1920, 1080, 1.5, 14), (1024, 600, 1, 14)]
SEED = int(os.environ.get("DAVO_SEED", random.SystemRandom().getrandbits(32)))


class Windows(unittest.TestCase):
    def look_at(self, screen):
        width, height, scale, points = screen
        with tempfile.TemporaryDirectory() as folder:
            screen = pathlib.Path(folder) / "screen.json"
            screen.write_text(json.dumps({
                "synchronousWindowSystemEvents": True,
                "windowFrameMargins": True,
                "screens": [{"name": "screen", "x": 0, "y": 0, "width": width, "height": height,
                             "logicalDpi": 96, "logicalBaseDpi": 96, "dpr": 1}]}))
            environment = dict(os.environ, QT_QPA_PLATFORM=f"offscreen:configfile={screen}",
                               QT_SCALE_FACTOR=str(scale), DAVO_POINTS=str(points),
                               XDG_CONFIG_HOME=folder, QT_LOGGING_RULES="*.debug=false")
            ended = subprocess.run([PICTURES, folder], env=environment, text=True,
                                   capture_output=True, check=False)
            pictures = list(pathlib.Path(folder).rglob("*.png"))
            self.assertGreaterEqual(len(pictures), FEWEST_PICTURES)
            cut = [line for line in ended.stdout.splitlines() if line.startswith("cut off: ")]
            if cut:
                self.fail(f"{screen}\n" + "\n".join(cut))
            self.assertEqual(ended.returncode, 0, ended.stderr)

    def test_no_text_is_cut_off(self):
        screens = SCREENS if "DAVO_LONG" in os.environ else [random.Random(SEED).choice(SCREENS)]
        # Most of the time the pictures wait for what is on its way.
        with concurrent.futures.ThreadPoolExecutor(len(screens)) as pool:
            list(pool.map(self.look_at, screens))


if __name__ == "__main__":
    print(f"DAVO_SEED={SEED}", flush=True)
    sys.exit(unittest.main())
