# SPDX-License-Identifier: GPL-3.0-or-later
"""That the program sleeps while it waits for the operator. How little of the processor it takes
meanwhile depends on the machine: bench/app/idle_bench.py shows it."""

import os
import pathlib
import sys
import time
import unittest

import harness

SECONDS = 3
MOST = 0.5  # of one core: what spins takes all of it


def processor_seconds(pid):
    fields = pathlib.Path(f"/proc/{pid}/stat").read_text().rsplit(")", 1)[1].split()
    return (int(fields[11]) + int(fields[12])) / os.sysconf("SC_CLK_TCK")


class Idle(unittest.TestCase):
    def share(self, program):
        """Of one core over some seconds; the driver sleeps meanwhile."""
        time.sleep(0.5)
        before, began = processor_seconds(program.process.pid), time.monotonic()
        time.sleep(SECONDS)
        used = processor_seconds(program.process.pid) - before
        return used / (time.monotonic() - began)

    def assert_idle(self, program, what, rig=None):
        """rig: readings are to arrive meanwhile."""
        before = rig and rig.byte_log.stat().st_size
        share = self.share(program)
        if rig:
            self.assertGreater(rig.byte_log.stat().st_size, before, "no readings arrived")
        print(f"{what}: {share:.2%} of one core", flush=True)
        self.assertLess(share, MOST, what)

    def test_waiting_takes_next_to_nothing(self):
        with harness.Rig("--seed", "5") as rig:
            program = rig.start_program()
            program.do("wait frmMain")
            self.assert_idle(program, "main window")
            harness.open_test_window(program)
            self.assert_idle(program, "test window before the first shot")
            program.do("click cmdStart", f'waitText lblMessage "{harness.RANGE}"')
            self.assert_idle(program, "a prompt to be confirmed")
            program.do(
                "click cmdContinue",
                f'waitText lblMessage "{harness.SATURATE}"',
                "waitEnabled cmdContinue",
            )
            self.assert_idle(program, "a prompt, with readings arriving", rig)
            program.do("click cmdContinue", f'waitText lblMessage "{harness.RATIO}" 60000')
            self.assert_idle(program, "the ratio prompt, with readings arriving", rig)
            program.do("click cmdContinue", 'waitText lblTest "TEST COMPLETE."')
            self.assert_idle(program, "a completed shot")


if __name__ == "__main__":
    sys.exit(unittest.main())
