# SPDX-License-Identifier: GPL-3.0-or-later
"""The headers of the PC and of the instrument are set up in the real program."""

import sys
import unittest

import harness

QUICK = ("--unpaced", "--quick", "--seed", "12")


def open_header(program, button):
    program.do("menu mnuSetHeaderFile", "wait frmHeaderOptn", f"click {button}")
    program.do("wait frmHeader", "waitGone frmHeaderOptn", "waitEnabled frmHeader/cmdSave")


def leave_header(program):
    program.do("click frmHeader/cmdExit", "waitGone frmHeader")


class Headers(unittest.TestCase):
    def test_the_header_of_the_pc_is_there_after_a_restart(self):
        with harness.session(*QUICK) as (rig, program):
            open_header(program, "cmdHeader0")
            program.do("type txtHeader0 ACME", 'type txtHeader7 "J. DOE"', "click frmHeader/cmdSave")
            program.do('waitText lblUsed "This header is saved and used for the tests that follow."')
            lines = (rig.data / "Davo.ini").read_bytes().split(b"\r\n")
            self.assertEqual(lines[0], b"COMPANY:" + b"ACME".ljust(20))
            self.assertEqual(lines[7], b"OPERATOR:" + b"J. DOE".ljust(20))
            leave_header(program)
            self.assertEqual(harness.leave(program), 0)
            program = rig.start_main()
            open_header(program, "cmdHeader0")
            self.assertEqual(program.text("txtHeader0"), "ACME")
            self.assertEqual(program.text("txtHeader7"), "J. DOE")
            leave_header(program)

    def test_the_headers_of_the_instrument_are_read_changed_and_read_again(self):
        with harness.session(*QUICK) as (rig, program):
            open_header(program, "cmdHeader1")
            program.do('waitText txtHeader0 "CENTRAL POWER"', 'type txtHeader0 "XB & SONS"')
            program.do("click frmHeader/cmdSave")
            program.do('waitText lblUsed "The DAVO has stored all ten headers."')
            self.assertIsNone(program.prompt())
            leave_header(program)
            open_header(program, "cmdHeader1")
            program.do('waitText txtHeader0 "XB & SONS"')
            self.assertEqual(program.text("txtHeader1"), "STATION 1")
            leave_header(program)

    def test_an_instrument_that_is_silent_is_said_and_the_menu_comes_back(self):
        with harness.session(*QUICK, "--fault", "silent") as (rig, program):
            program.do("menu mnuSetHeaderFile", "wait frmHeaderOptn")
            program.do("click cmdHeader1")
            program.do('answer Ok "DAVO is not ready.  Please check equipment."')
            program.do('waitText lblUsed "The headers of the DAVO were not read."')
            leave_header(program)


if __name__ == "__main__":
    sys.exit(unittest.main())
