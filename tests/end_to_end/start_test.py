# SPDX-License-Identifier: GPL-3.0-or-later
"""Start and end of the program: one copy at a time, and the settings that it leaves."""

import sys
import unittest

import harness

AGAIN = "Cannot load DAVO again. The application is already opened."


class Start(unittest.TestCase):
    def test_a_second_copy_says_so_and_ends(self):
        with harness.started("--unpaced", "--quick") as (rig, first):
            second = rig.start_program()
            second.do(f'answer Ok "{AGAIN}"')
            self.assertEqual(second.wait_end(), 0)
            # The first one is untouched and still has the instrument.
            harness.open_test_window(first)
            harness.close_test_window(first)
            self.assertEqual(harness.leave(first), 0)

    def test_a_copy_that_was_killed_does_not_bar_the_next(self):
        with harness.session("--unpaced", "--quick") as (rig, first):
            first.process.kill()
            first.end()
            rig.start_main()

    def test_the_splash_stands_before_the_main_window(self):
        with harness.Rig("--unpaced", "--quick") as rig:
            program = rig.start_program()
            program.do("wait frmSplash")
            self.assertIsNone(program.window("frmMain"))
            program.do("wait frmMain", "waitGone frmSplash")
            self.assertEqual(harness.leave(program), 0)

    def test_settings_are_written_at_the_end(self):
        with harness.started("--unpaced", "--quick") as (rig, program):
            self.assertEqual(harness.leave(program), 0)
            settings = (rig.folder / "config" / "davo" / "davo.ini").read_text().splitlines()
            for line in (
                "KPTYPE\\KPTYPEVAL=ASA 10/50 Marker",
                'COMPORT\\COMPORTVAL=" 1"',
                f"PORTDEVICES\\COM1={rig.port}",
                "IMP\\IMPVAL=N",
                "SORT\\SORTVAL=-1 -1",
                f"PATH\\PATHVAL={rig.data}/",
            ):
                self.assertIn(line, settings)


if __name__ == "__main__":
    sys.exit(unittest.main())
