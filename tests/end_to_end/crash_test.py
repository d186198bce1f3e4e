# SPDX-License-Identifier: GPL-3.0-or-later
"""A crash of the program leaves a trace, of which the next start says where it is, once; the shots are
there."""

import re
import signal
import sys
import unittest

import harness

SAID = re.compile(
    r"The program crashed last time\. Each shot that it showed as on the disk is there: a session "
    r"that was not saved is on the start page\.\s+What helps to find the fault is in (\S+)\. "
    r"It is sent to nobody\.")


class Crash(unittest.TestCase):
    def test_the_next_start_says_where_the_trace_is_and_has_the_session(self):
        with harness.Rig("--unpaced", "--quick") as rig:
            program = rig.start_program()
            harness.open_test_window(program)
            harness.full_shot(program, first=True)
            program.process.send_signal(signal.SIGSEGV)
            self.assertEqual(program.wait_end(), -signal.SIGSEGV)

            program = rig.start_program()
            program.do("wait msgBox")
            said = SAID.fullmatch(program.prompt())
            self.assertTrue(said, program.prompt())
            program.do("answer Ok", "wait lblWhen0")
            self.assertIn(", 1 shot", program.control("lblWhen0")["text"])
            with open(said[1], encoding="utf-8") as file:
                trace = file.read()
            self.assertRegex(trace, r"\ADAVO PC-Interface V\.\d+\.\d+, signal 11\n")
            self.assertIn("libQt6Core", trace)
            self.assertEqual(harness.leave(program), 0)

            program = rig.start_program()
            program.do("wait frmMain", "wait lblWhen0")
            self.assertIsNone(program.prompt())
            self.assertEqual(harness.leave(program), 0)


if __name__ == "__main__":
    sys.exit(unittest.main())
