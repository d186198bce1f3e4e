# SPDX-License-Identifier: GPL-3.0-or-later
"""A session that davo-line writes down, and the same session with its log in the instrument's place."""

import os
import re
import subprocess
import sys
import unittest

import expected_record
import harness

LINE = os.environ["DAVO_LINE"]


class LineRig(harness.Rig):
    """davo-line between the instrument and the program."""

    def start_instrument(self, *options):
        port = self.port
        self.port = self.folder / "far"
        super().start_instrument("--unpaced", "--quick", *options)
        self.port = port
        self.log = self.folder / "conversation.log"
        self.between = subprocess.Popen([LINE, self.folder / "far", self.port, self.log],
                                        stdout=subprocess.PIPE, start_new_session=True)
        harness.wait_until(self.port.exists, "the line", 10)

    def close(self, keep=False):
        harness.end_group(self.between)
        super().close(keep)


def play(rig):
    """Two shots, one of them of the ratio alone, and a session that is saved; its record."""
    program = rig.start_main()
    harness.open_test_window(program)
    harness.type_nameplate(program)
    harness.full_shot(program, first=True)
    harness.ratio_shot(program)
    harness.save_session(program, "L1.txt")
    if harness.leave(program) != 0:
        raise AssertionError("the program ended with an error")
    return (rig.data / "L1.txt").read_bytes()


def undated(record):
    return re.sub(rb"\r\n(DATE|TIME): [^\r]*", rb"\r\n\1:", record)


def departures(log):
    """What --check says against a log, a line each."""
    ran = subprocess.run([harness.INSTRUMENT, "--check", log], capture_output=True, text=True,
                         check=False)
    found = re.findall(r"^line .*", ran.stdout, re.MULTILINE)
    if bool(found) != bool(ran.returncode):
        raise AssertionError(ran.stdout + ran.stderr)
    return found


class Line(unittest.TestCase):
    def test_a_session_is_written_down_checked_and_answered_again(self):
        with LineRig("--seed", "31") as rig:
            record = play(rig)
            shots = expected_record.shots_of(rig.log)
            self.assertEqual([shot.ratio_only for shot in shots], [False, True])
            self.assertEqual(len(expected_record.shots_of(rig.byte_log)), 2)
            self.assertEqual(departures(rig.byte_log), [])
            # A busy machine can hand over at once what the instrument sent one after the other.
            found = departures(rig.log)
            self.assertEqual([line for line in found if " after a reading, " not in line], [])

            with harness.Rig("--replay", str(rig.log)) as again:
                self.assertEqual(undated(play(again)), undated(record))
                again.instrument.terminate()
                said = again.instrument.communicate(timeout=harness.PATIENCE)[0].decode()
                self.assertRegex(said, r"\nwhole: \d+ bytes from the PC as recorded\n$")
                self.assertEqual(again.instrument.returncode, 0)


if __name__ == "__main__":
    sys.exit(unittest.main())
