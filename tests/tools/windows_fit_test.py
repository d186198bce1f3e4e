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


def sets_of_pictures():
    """The program names them when it is asked for nothing."""
    usage = subprocess.run([PICTURES], text=True, capture_output=True, check=False,
                           env=dict(os.environ, QT_QPA_PLATFORM="offscreen")).stderr
    return usage.rpartition("with the sets ")[2].split()


class Windows(unittest.TestCase):
    def look_at(self, screen, pictures):
        """What is cut off on the screen, and how many pictures there are of a set."""
        width, height, scale, points = screen
        with tempfile.TemporaryDirectory() as folder:
            configuration = pathlib.Path(folder) / "screen.json"
            configuration.write_text(json.dumps({
                "synchronousWindowSystemEvents": True,
                "windowFrameMargins": True,
                "screens": [{"name": "screen", "x": 0, "y": 0, "width": width, "height": height,
                             "logicalDpi": 96, "logicalBaseDpi": 96, "dpr": 1}]}))
            environment = dict(os.environ, QT_QPA_PLATFORM=f"offscreen:configfile={configuration}",
                               QT_SCALE_FACTOR=str(scale), DAVO_POINTS=str(points),
                               XDG_CONFIG_HOME=folder, QT_LOGGING_RULES="*.debug=false")
            ended = subprocess.run([PICTURES, folder, pictures], env=environment, text=True,
                                   capture_output=True, check=False)
            cut = [f"{screen}: {line}" for line in ended.stdout.splitlines() if line.startswith("cut off: ")]
            if ended.returncode != 0 and not cut:
                cut = [f"{screen}: {pictures} ended with {ended.returncode}: {ended.stderr}"]
            return cut, len(list(pathlib.Path(folder).rglob("*.png")))

    def test_no_text_is_cut_off(self):
        screens = SCREENS if "DAVO_LONG" in os.environ else [random.Random(SEED).choice(SCREENS)]
        sets = sets_of_pictures()
        self.assertGreaterEqual(len(sets), 7)
        looks = [(screen, pictures) for pictures in reversed(sets) for screen in screens]
        # Most of the time the pictures wait for what is on its way.
        with concurrent.futures.ThreadPoolExecutor(8) as pool:
            seen = list(pool.map(lambda look: self.look_at(*look), looks))
        self.assertEqual([line for cut, _ in seen for line in cut], [])
        self.assertGreaterEqual(sum(count for _, count in seen), FEWEST_PICTURES * len(screens))


if __name__ == "__main__":
    print(f"DAVO_SEED={SEED}", flush=True)
    sys.exit(unittest.main())
