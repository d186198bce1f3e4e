# SPDX-License-Identifier: GPL-3.0-or-later
"""That the program sleeps while it waits for the operator. How little of the processor it takes
meanwhile depends on the machine: bench/app/idle_bench.py shows it."""

import sys
import unittest

import harness

SECONDS = 3
MOST = 0.5  # of one core: what spins takes all of it


class Idle(unittest.TestCase):
    def assert_idle(self, program, what, rig=None):
        """rig: readings are to arrive meanwhile."""
        before = rig and rig.byte_log.stat().st_size
        share = harness.idle_share(program, SECONDS)
        if rig:
            self.assertGreater(rig.byte_log.stat().st_size, before, "no readings arrived")
        print(f"{what}: {share:.2%} of one core", flush=True)
        self.assertLess(share, MOST, what)

    def test_waiting_takes_next_to_nothing(self):
        with harness.started("--seed", "5") as (rig, program):
            self.assert_idle(program, "main window")
            harness.open_test_window(program)
            self.assert_idle(program, "test window before the first shot")
            program.do("click cmdStart", f'waitText lblMessage "{harness.RANGE}"')
            self.assert_idle(program, "a prompt to be confirmed")
            harness.saturate(program)
            self.assert_idle(program, "a prompt, with readings arriving", rig)
            harness.await_ratio(program)
            self.assert_idle(program, "the ratio prompt, with readings arriving", rig)
            harness.complete(program)
            self.assert_idle(program, "a completed shot")


if __name__ == "__main__":
    sys.exit(unittest.main())
