"""F1 in the real program, in the middle of a shot, in a message, and in a list."""

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


class Key(unittest.TestCase):
    def test_the_guide_fits_the_window_and_the_shot_goes_on(self):
        with harness.Bench("--unpaced", "--quick", "--seed", "3") as bench:
            program = bench.start_program()
            program.do("wait frmMain")
            press(program, "frmMain")
            harness.open_test_window(program)
            program.do("click cmdStart", f'waitText lblMessage "{harness.RANGE}"')
            press(program, "frmCControl")
            program.do("click cmdContinue", f'waitText lblMessage "{harness.SATURATE}"',
                       "waitEnabled cmdContinue")
            press(program, "frmCControl")
            program.do("click cmdContinue", f'waitText lblMessage "{harness.RATIO}" 60000',
                       "click cmdContinue", 'waitText lblTest "TEST COMPLETE."')
            program.do("click cmdExit", f'waitText msgBox "{harness.SAVE}"', "key F1",
                       f'waitContains msgBox "{NO_BROWSER}{GUIDE / "f1" / "message-"}"', "answer Ok")
            program.do(f'answer Yes "{harness.SAVE}"', 'chooseFile "Kept.txt"')
            harness.finish_save(program)
            program.do("menu mnuRecall", "wait frmTestList")
            press(program, "frmTestList")
            program.do("click cmdExit", "waitGone frmTestList")
            self.assertEqual(harness.leave(program), 0)


if __name__ == "__main__":
    sys.exit(unittest.main())
