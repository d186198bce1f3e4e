# SPDX-License-Identifier: GPL-3.0-or-later
"""What a monkey does next: by chance, from what can be done, or as it is given.

An act is one line: a command of the driver, or one of the rig's own, which begins with "!".
"""

import random
import re

FAULTS = [
    "slow:{slow}",
    "noise:{rate}",
    "cut-line:{n}",
    "dropped-echo:{k}",
    "wrong-lengths:{length}",
    "unplugged:{n}",
    "cut:{n}",
    "stall:{n},{ms}",
    "stall:{n}",
    "double:{n}",
    "flip:{n},{bit}",
    "silent",
]
TEXTS = ["", "1200", "5", "0", "-3", "1e9", "1,5", "12.5", "Station 14", "T1", "a.b", "?",
         "\u00c5ngstr\u00f6m", "x" * 45, "two\\nlines", "100000"]
NAMES = ["T1", "T2.txt", "T3", "M1.txt", "M2.txt", "my record", "a.b", "CON", "\u00fc 1", "",
         "r" * 70]
KEYS = (["Return", "Space", "Tab", "Escape", "Up", "Down", "F5"] * 3
        + ["Shift+Tab", "Left", "Right", "Home", "End", "Delete", "Backspace", "Ctrl+A", "Ctrl+W",
           "Ctrl+F4", "F1", "PgDown", "1", "5", "T", "."]
        + [f"Alt+{letter}" for letter in "ACDEFHNPRSUX"])

# Never pressed: these have the program look at, or take, a built-in port of this machine.
BARRED = re.compile(r"chkBuiltIn|lstPorts|cboComPort|(folderBrowser|cdFile)/")
FOLDERS = re.compile(r"txtFolder|txtPath|txtTarget|txtInput")


class GivenActs:
    """The lines of a file; "pause" is one of them."""

    def __init__(self, lines):
        self._lines = iter([line for line in lines if line.strip() and not line.startswith("#")])

    def next(self, _look, _rig):
        return next(self._lines, None)


class RandomActs:
    def __init__(self, seed, count):
        self.chance = random.Random(seed)
        self.left = count
        self.plan = []

    def next(self, look, rig):
        if self.plan:
            return self.plan.pop(0)
        if self.left == 0:
            return None
        self.left -= 1
        self.plan = self._choose(look, rig)
        pause = self.chance.choice([0, 0, 0.02, 0.1, 0.1, 0.3, 0.3, 0.6])
        if pause:
            self.plan.append(f"!pause {pause}")
        return self.plan.pop(0)

    def _choose(self, look, rig):
        if not rig.running():
            return ["!start"]
        if self.chance.random() < 0.09 or not rig.plugged and self.chance.random() < 0.3:
            return [self._around(rig)]
        if self.chance.random() < 0.1 and not self._in_config(look):
            key = self.chance.choice(KEYS)
            # A button that is pressed by its letter clicks a tenth of a second later, whatever
            # has come in front of it by then.
            return [f"key {key} 0"] + (["!pause 0.15"] if key.startswith("Alt+") else [])
        dialog = look["dialogs"][-1] if look["dialogs"] else None
        if dialog and dialog["name"] in ("cdFile", "folderBrowser", "inputBox"):
            return self._answer_dialog(dialog["name"], rig)
        acts = sorted((act for act in look["acts"] if not BARRED.search(act["do"])),
                      key=lambda act: act["do"])
        if not acts:
            return ["key Escape 0"]
        act = self.chance.choices(acts, [self._weight(act) for act in acts])[0]
        return [self._complete(act, rig)]

    @staticmethod
    def _in_config(look):
        return any("frmConfig/" in act["do"] for act in look["acts"])

    @staticmethod
    def _weight(act):
        what = act["do"]
        if what.startswith("answer"):
            return 20
        if what.startswith("close"):
            return 0.3
        if re.search(r"cmdStart|cmdContinue", what):
            return 30
        if re.search(r"mnuBoth|cmdBoth|mnuDownload|cmdDownload", what):
            return 5
        if re.search(r"mnu(Recall|Overlay|FileUtil|SetDescr|SetHeaderFile)|cmdOp|cmdRecord|cmdSave", what):
            return 4
        if re.search(r"frmCControl/cmdCancel|mnuExit|cmdExit$", what):
            return 1.5
        if what.startswith("row"):
            return 4
        return 1

    def _complete(self, act, rig):
        what = act["do"]
        if what.startswith("type"):
            texts = rig.folders() if FOLDERS.search(what) else TEXTS
            return f'{what} "{self.chance.choice(texts)}" 0'
        if what.startswith("row"):
            row = self.chance.randrange(int(act["text"]))
            return f"{what} {row}{self.chance.choice(['', '', ' double'])} 0"
        return what + (" 300" if what.startswith("menu") else " 0")

    def _answer_dialog(self, name, rig):
        if self.chance.random() < 0.25:
            return ["key Escape 0"]
        if name == "cdFile":
            return [f'chooseFile "{self.chance.choice(NAMES)}" 0']
        if name == "inputBox":
            return [f'type txtInput "{self.chance.choice(NAMES)}" 0', "key Return 0"]
        return [f'type folderBrowser/fileNameEdit "{self.chance.choice(rig.folders())}" 0',
                "key Return 0"]

    def _around(self, rig):
        """Something that happens to the program from outside."""
        if not rig.plugged:
            return f"!plug {self._fault()}".rstrip()
        kinds = {"unplug": 4, "plug": 2, "kill": 2, "term": 1, "file": 4, "folder": 1}
        if rig.small_disk:
            kinds["disk"] = 2
        kind = self.chance.choices(list(kinds), list(kinds.values()))[0]
        if kind == "plug":
            return f"!plug {self._fault()}".rstrip()
        if kind == "file":
            kinds = ["garbage", "empty", "cut", "delete", "folder", "directory", "stranger", "scratch"]
            return f"!file {self.chance.choice(kinds)} {self.chance.randrange(1000)}"
        return f"!{kind}"

    def _fault(self):
        if self.chance.random() < 0.6:
            return ""
        return self.chance.choice(FAULTS).format(
            slow=self.chance.choice([2, 5]), rate=self.chance.choice([0.0005, 0.005]),
            n=self.chance.randrange(3000), k=self.chance.randrange(1, 200),
            length=self.chance.choice([-6, -1, 1, 8]), ms=self.chance.choice([50, 500, 3000]),
            bit=self.chance.randrange(8))
