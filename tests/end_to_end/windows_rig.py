# SPDX-License-Identifier: GPL-3.0-or-later
"""The Windows program in Wine, with the instrument of this machine on its COM1.

Runs inside packaging/windows/in-wine, which gives WINEPREFIX and a display, and sees to it that COM1
is the link WINEPREFIX/line1 and never a port of this machine.
"""

import os
import pathlib
import shutil
import subprocess

import harness

PREFIX = pathlib.Path(os.environ["WINEPREFIX"])
RUN = os.environ["DAVO_WINE_RUN"]
STORE = r"HKCU\Software\VB and VBA Program Settings"
SCRATCH = PREFIX / "drive_c"


def in_windows(path):
    """A path of this machine as a program in Wine has it."""
    return "Z:" + str(path).replace("/", "\\")


def registry(*arguments):
    return subprocess.run(
        [RUN, "reg", *arguments], stdin=subprocess.DEVNULL, capture_output=True, check=False
    )


def store(application, section, value, text):
    done = registry("add", f"{STORE}\\{application}\\{section}", "/v", value, "/d", text, "/f")
    if done.returncode != 0:
        raise AssertionError(done.stdout)


def stored():
    """All values of the store: (application, section, value) to (kind, text)."""
    values = {}
    key = ()
    for line in registry("query", STORE, "/s").stdout.decode("cp1252").splitlines():
        if line.startswith("HKEY_CURRENT_USER"):
            key = tuple(line.strip().split("\\")[3:])
        elif line.strip():
            name, kind, text = (line.strip().split("    ", 2) + [""])[:3]
            values[(*key, name)] = (kind, text)
    return values


class WindowsRig(harness.Rig):
    command = [RUN, harness.PROGRAM]

    def __init__(self, *instrument_options):
        registry("delete", STORE, "/f")
        for left in ("TESTFILE.txt", "TESTFILE.jnl", "TempTEST"):
            (SCRATCH / left).unlink(missing_ok=True)
        super().__init__()
        self.link = PREFIX / "line1"
        self.link.unlink(missing_ok=True)
        harness.end_group(self.instrument)
        self.byte_log.unlink(missing_ok=True)
        self.port = self.link
        self.start_instrument(*instrument_options)
        for name in ("HOME", "QT_QPA_PLATFORM", "QT_PLUGIN_PATH", "XDG_RUNTIME_DIR"):
            self.environment.pop(name)
        self.environment["DAVO_DRIVER_PICTURES"] = in_windows(self.pictures)
        store("DATAPATH", "PATH", "PATHVAL", in_windows(self.data) + "\\")

    def close(self, keep=False):
        super().close(keep)
        self.link.unlink(missing_ok=True)

    def keep_pictures(self, folder):
        for picture in self.pictures.iterdir():
            shutil.copyfile(picture, pathlib.Path(folder) / picture.name)
