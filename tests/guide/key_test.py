# SPDX-License-Identifier: GPL-3.0-or-later
"""F1 in the real program: in every window and dialog, in a message, in the middle of a shot."""

import pathlib
import sys
import unittest

HERE = pathlib.Path(__file__).parent
sys.path.insert(0, str(HERE.parent / "end_to_end"))
import harness  # noqa: E402

GUIDE = pathlib.Path(harness.PROGRAM).parent / "guide"
# Nothing shows HTML here, which is said with the file that was to be shown.
NO_BROWSER = "This computer has no program that shows the guide. It is stored as "


def press(program, window):
    program.do("key F1", f'answer Ok "{NO_BROWSER}{GUIDE / "f1" / window}.html"')


def press_in_message(program):
    """In a message or a question whose text the guide has: at the message's own place."""
    program.do("key F1", f'waitContains msgBox "{NO_BROWSER}{GUIDE / "f1" / "message-"}"', "answer Ok")


def first_record(program):
    program.do("click lvTest", "key End", "key Home")


class Key(unittest.TestCase):
    def test_the_guide_fits_the_window_and_the_shot_goes_on(self):
        with harness.session("--unpaced", "--quick", "--seed", "3") as (rig, program):
            press(program, "frmMain")
            harness.open_test_window(program)
            program.do("click cmdHeader", "wait frmHeader")
            press(program, "frmHeader")
            program.do("click cmdNotes", "wait frmNotepad")
            press(program, "frmNotepad")
            program.do("close frmNotepad", "click frmHeader/cmdExit", "waitGone frmHeader")
            program.do("click cmdStart", f'waitText lblMessage "{harness.RANGE}"')
            press(program, "frmCControl")
            program.do("click cmdContinue", f'waitText lblMessage "{harness.SATURATE}"',
                       "waitEnabled cmdContinue")
            press(program, "frmCControl")
            program.do("click cmdContinue", f'waitText lblMessage "{harness.RATIO}" 60000',
                       "click cmdContinue", 'waitText lblTest "TEST COMPLETE."')
            program.do("click cmdExit", f'waitText msgBox "{harness.SAVE}"')
            press_in_message(program)
            program.do(f'answer Yes "{harness.SAVE}"', "wait cdFile")
            press(program, "cdFile")
            program.do('chooseFile "Kept.txt"')
            harness.finish_save(program)
            program.do("menu mnuRatio", "wait frmCControl", "waitEnabled cmdStart")
            press(program, "frmCControl")
            program.do("click cmdExit", "waitGone frmCControl")

    def test_settings_headers_and_about(self):
        with harness.started("--unpaced", "--quick", "--seed", "3") as (rig, program):
            for menu, window, leave in (("mnuConfig", "frmConfig", "frmConfig/cmdExit"),
                                        ("mnuAbout", "frmAbout", "frmAbout/Command1")):
                program.do(f"menu {menu}", f"wait {window}")
                press(program, window)
                program.do(f"click {leave}", f"waitGone {window}")
            program.do("menu mnuSetHeaderFile", "wait frmHeaderOptn")
            press(program, "frmHeaderOptn")
            program.do("click cmdHeader1", "wait frmHeader", 'waitText txtHeader0 "CENTRAL POWER"',
                       "waitEnabled frmHeader/cmdSave")
            press(program, "frmHeader-davo")
            program.do("click frmHeader/cmdExit", "waitGone frmHeader")
            program.do("menu mnuSetHeaderFile", "wait frmHeaderOptn", "click cmdHeader0",
                       "wait frmHeader")
            press(program, "frmHeader-pc")
            program.do("click frmHeader/cmdExit", "waitGone frmHeader")
            program.do("menu mnuExit", f'waitText msgBox "{harness.LEAVE}"')
            press_in_message(program)
            program.do(f'answer Yes "{harness.LEAVE}"')
            self.assertEqual(program.wait_end(), 0)

    def test_the_windows_of_records(self):
        with harness.session("--unpaced", "--quick", "--seed", "3", "--memory", "3") as (rig, program):
            program.do("menu mnuDownload", "wait frmTestList",
                       "waitText cmdSave Save")
            press(program, "frmTestList-memory")
            first_record(program)
            program.do("key Shift+Down", "click cmdSave", 'waitContains lblMessage "were saved."',
                       "waitEnabled cmdSave", "click cmdExit", "waitGone frmTestList")

            program.do("menu mnuRecall", "wait frmTestList")
            press(program, "frmTestList")
            first_record(program)
            program.do("click tblTests")
            press(program, "RecordPanel")
            program.do("click cmdDir", "wait folderBrowser")
            press(program, "folderBrowser")
            program.do("key Escape", "waitGone folderBrowser", "click cmdExit",
                       "waitGone frmTestList")

            program.do("menu mnuSetDescr", "wait frmSetDescr")
            press(program, "frmSetDescr")
            program.do("click cmdExit", "waitGone frmSetDescr")

            program.do("menu mnuOverlay", "wait frmFileUtilOverlay")
            press(program, "frmFileUtilOverlay-overlay")
            program.do("click cmdExit", "waitGone frmFileUtilOverlay")

            program.do("menu mnuFileUtil", "wait frmFileUtilOverlay")
            press(program, "frmFileUtilOverlay")
            first_record(program)
            program.do("click cmdOp0", "wait inputBox")
            press_in_message(program)
            program.do("key Escape", "waitGone inputBox", "waitGone frmFileUtilOverlay")

            program.do("menu mnuFileUtil", "wait frmFileUtilOverlay")
            first_record(program)
            program.do("click cmdOp1", "wait frmCopyFile", "waitGone frmFileUtilOverlay")
            press(program, "frmCopyFile")
            program.do(f'type txtPath "{rig.folder}"', "click cmdOK", "answer Ok",
                       "waitGone frmCopyFile")


if __name__ == "__main__":
    sys.exit(unittest.main())
