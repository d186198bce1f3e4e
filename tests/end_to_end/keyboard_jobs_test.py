# SPDX-License-Identifier: GPL-3.0-or-later
"""The jobs of a technician by the keyboard alone, in the real program; prints the keys of each."""

import pathlib
import sys
import unittest

import harness
from file_utilities_test import full_record

ENGINE = pathlib.Path("/usr/lib/libreoffice/program/libsclo.so")
QUICK = ("--unpaced", "--quick", "--seed", "17")


class Hand:
    """Presses keys where the focus is, one at a time, and counts them."""

    def __init__(self, program):
        self.program = program
        self.count = 0

    def press(self, *keys):
        self.count += len(keys)
        self.program.do(*(f"key {key}" for key in keys))

    def write(self, text):
        self.press(*text)

    def menu(self, *letters):
        """An item of the File menu, by its letters."""
        self.press("Alt+F", *letters)

    def wait(self, *commands):
        self.program.do(*commands)

    def tell(self, job):
        print(f"{job}: {self.count} keys")


class KeyboardJobs(unittest.TestCase):
    def start(self, *options, records=()):
        self.rig = harness.Rig(*QUICK, *options)
        self.addCleanup(self.rig.close)
        for name in records:
            (self.rig.data / f"{name}.txt").write_bytes(full_record(name, [1, 2]))
        self.program = self.rig.start_main()
        return Hand(self.program)

    def leave(self):
        self.assertEqual(harness.leave(self.program), 0)

    def shot(self, hand):
        """From the range prompt to the complete shot."""
        hand.wait(f'waitText lblMessage "{harness.RANGE}"')
        hand.press("Return")
        hand.wait(f'waitText lblMessage "{harness.SATURATE}"', "waitEnabled cmdContinue")
        hand.press("Return")
        hand.wait(f'waitText lblMessage "{harness.RATIO}" 60000')
        hand.press("Return")
        hand.wait('waitText lblTest "TEST COMPLETE."')

    def first_shot(self, hand):
        hand.press("Return")
        hand.wait("wait frmCControl", "waitDisabled cmdCancel", "waitEnabled cmdStart")
        hand.press("Return")
        self.shot(hand)

    def test_first_start_to_first_shot(self):
        hand = self.start()
        self.first_shot(hand)
        hand.tell("first start to first shot")
        self.program.do("key Escape", "waitGone frmCControl")
        self.leave()

    def test_three_shots_are_saved(self):
        hand = self.start()
        self.first_shot(hand)
        hand.count = 0
        for _ in range(2):
            hand.press("Alt+N")
            hand.wait(f'waitText msgBox "{harness.RATIO_ONLY}"')
            hand.press("Alt+N")
            self.shot(hand)
        hand.press("Alt+E")
        hand.wait(f'waitText msgBox "{harness.SAVE}"')
        hand.press("Alt+Y")
        hand.wait("wait cdFile")
        hand.press("Return")
        hand.wait(f'waitText msgBox "{harness.VIEW}"')
        hand.press("Alt+N")
        hand.wait("waitGone frmCControl")
        self.assertEqual(len(list(self.rig.data.glob("*.txt"))), 1)
        hand.tell("two more shots, saved with the name that is proposed")
        self.leave()

    @unittest.skipUnless(ENGINE.exists(), "this machine has no LibreOffice Calc")
    def test_a_record_is_recalled_and_viewed(self):
        hand = self.start(records=["A1", "B2"])
        hand.menu("R")
        hand.wait("wait frmTestList")
        hand.press("Down", "Return")
        hand.wait("waitContains msgBox \"stored as\"")
        hand.press("Return")
        hand.wait("waitEnabled cmdSave")
        hand.press("Escape")
        hand.wait("waitGone frmTestList")
        made = {path.name for path in self.rig.excel.glob("*.xls")} - {"DAVO_Header.xls"}
        self.assertEqual(len(made), 1, made)
        hand.tell("recall, view and leave")
        self.leave()

    def test_three_records_are_downloaded(self):
        hand = self.start("--memory", "5")
        hand.menu("D")
        hand.wait("wait frmTestList", "waitText cmdSave Save")
        hand.press("Down", "Shift+Down", "Shift+Down")
        hand.wait('waitText lblSelect "Select: 3 of 5"')
        hand.press("Return")
        hand.wait('waitText lblMessage "3 of 3 records were saved."', "waitEnabled cmdSave")
        hand.press("Escape")
        hand.wait("waitGone frmTestList")
        hand.tell("download three of five records")
        self.leave()

    def test_records_are_copied(self):
        hand = self.start(records=["A1", "B2", "C3"])
        target = pathlib.Path("/tmp") / f"k{self.program.process.pid}"
        target.mkdir()
        self.addCleanup(lambda: [path.unlink() for path in target.iterdir()] and target.rmdir())
        # Its letter is that of another item of the menu, too.
        hand.menu("Up", "Up", "Up", "Up", "Return")
        hand.wait("wait frmFileUtilOverlay")
        hand.press("Ctrl+A", "Alt+C")
        hand.wait("wait frmCopyFile", "waitGone frmFileUtilOverlay")
        before = hand.count
        hand.write(str(target))
        path_keys = hand.count - before
        hand.press("Alt+O")
        hand.wait("wait msgBox")
        hand.press("Return")
        hand.wait("waitGone frmCopyFile")
        self.assertEqual(len(list(target.iterdir())), 3)
        hand.count -= path_keys
        hand.tell("copy three records, besides the letters of the folder")
        self.leave()

    @unittest.skipUnless(ENGINE.exists(), "this machine has no LibreOffice Calc")
    def test_two_tests_are_laid_over_each_other(self):
        hand = self.start(records=["A1", "B2"])
        hand.menu("O")
        hand.wait("wait frmFileUtilOverlay")
        hand.press("Down", "Alt+1")
        hand.wait('waitContains txtTest1 "A1"')
        hand.press("Down", "Alt+2")
        hand.wait('waitContains txtTest2 "B2"')
        hand.press("Alt+P")
        hand.wait("waitContains msgBox \"stored as\"")
        hand.press("Return")
        hand.wait("waitEnabled cmdOp2")
        hand.press("Escape")
        hand.wait("waitGone frmFileUtilOverlay")
        self.assertTrue((self.rig.excel / "2Graphs.xls").exists())
        hand.tell("overlay of two tests")
        self.leave()

    def test_a_port_is_chosen_with_nothing_plugged_in(self):
        hand = self.start()
        harness.end_group(self.rig.instrument)
        self.rig.port.unlink(missing_ok=True)
        hand.wait(f'waitText msgBox "{harness.LOST}"')
        hand.press("Return")
        hand.wait("waitGone msgBox", 'waitText lblPort "COM1 not plugged in"')
        hand.count = 0
        hand.menu("C")
        hand.wait("wait frmConfig")
        hand.press("Return")
        hand.wait("wait cmdLeave")
        hand.press("Alt+W")
        hand.wait("waitGone frmConfig")
        hand.tell("look for a port that is not there, and leave")
        self.rig.start_instrument(*QUICK)
        hand.count = 0
        hand.menu("C")
        hand.wait("wait frmConfig")
        hand.press("Return")
        hand.wait("waitGone frmConfig")
        hand.tell("choose the port once it is plugged in")
        self.leave()


if __name__ == "__main__":
    sys.exit(unittest.main())
