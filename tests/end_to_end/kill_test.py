# SPDX-License-Identifier: GPL-3.0-or-later
"""Ends the program at every single call by which it changes a file, and looks what is left.

A session of three shots is played with the program killed at call 1, 2, 3 ... until a session ends
by itself: before the call, after it, and with half of a write done. After each kill the program is
started again, the session that it offers on its start page is saved, and every shot that had been shown as complete
must be in a record file, each byte right. Another series kills the program while it saves what an
earlier run has left.

A tenth of the calls, picked at random, is looked at; all of them when DAVO_LONG is set. The seed is
printed, and DAVO_SEED repeats the choice.
"""

import concurrent.futures
import os
import re
import signal
import sys
import threading
import time
import unittest

import expected_record
import harness

# Most of a run is waiting, so more of them than processors.
WORKERS = int(os.environ.get("DAVO_KILL_WORKERS", "8"))
SHARE = harness.share_of(10)
NAMEPLATE = ("1200", "5")
BLANK_HEADER = [" " * 20] * 8
KILLED = -signal.SIGKILL


def is_offered(program, card):
    return program.control(f"lblWhen{card}") is not None


class Run:
    """One killed session and what came of it."""

    def __init__(self, when, number):
        self.when, self.number = when, number
        self.shown = 0  # shots that the screen called complete
        self.recoveries = 0

    def __str__(self):
        return f"kill {self.when} call {self.number}, {self.shown} shots shown"

    def killer(self, rig):
        """The environment that kills the program."""
        return {
            "LD_PRELOAD": harness.KILL_AT,
            "DAVO_KILL_FOLDERS": f"{rig.scratch}:{rig.data}",
            "DAVO_KILL_AT": str(self.number),
            "DAVO_KILL_WHEN": self.when,
            "DAVO_KILL_LOG": str(rig.folder / "calls.log"),
        }

    def until_killed(self, program, act):
        """Whether the program was killed during act; if not, it has left by itself."""
        try:
            act(program)
            assert harness.leave(program) == 0, self
        except harness.DriverFailed:
            if program.wait_end() != KILLED:
                raise
        program.end()
        return program.process.returncode == KILLED

    def three_shots(self, program):
        harness.open_test_window(program)
        harness.type_nameplate(program, *NAMEPLATE)
        for shot in (harness.full_shot, harness.ratio_shot, harness.full_shot):
            shot(program, first=self.shown == 0)
            self.shown += 1

    def three_shots_saved(self, program):
        self.three_shots(program)
        harness.save_session(program, "Killed.txt")

    def recover(self, program):
        """Saves what is offered."""
        self.recoveries += 1
        program.do("wait frmMain")
        offered = [card for card in range(3) if is_offered(program, card)]
        assert len(offered) <= 1, f"{self}: {len(offered)} sessions offered"
        if offered:
            program.do("click cmdSaveSession0", f"chooseFile Recovered{self.recoveries}.txt",
                       "waitGone sessionCards")
        # What was saved is not offered a second time.
        harness.open_test_window(program)
        harness.close_test_window(program)
        assert not is_offered(program, 0), f"{self}: offered again"

    def check(self, rig):
        """Every shot that was shown is in a record file, and every record file is right."""
        line = expected_record.shots_of(rig.byte_log)
        files = sorted(rig.data.glob("*.txt"))
        held = 0
        for path in files:
            actual = path.read_bytes()
            count = len(re.findall(rb"(?m)^REC NUMBER: ", actual))
            date, at = expected_record.begun(actual)
            time.strptime(f"{date} {at}", "%m/%d/%y %H:%M")
            expected = expected_record.record_file(
                path.name, date, at, BLANK_HEADER, line[:count], NAMEPLATE
            )
            assert actual == expected, f"{self}: {path.name}:\n{actual}\nexpected:\n{expected}"
            held = max(held, count)
        assert held >= self.shown, f"{self}: only {held} in {[path.name for path in files]}"


def kill_session(run, rig):
    """Kills the program during a session; whether it was killed."""
    killed = run.until_killed(rig.start_program(run.killer(rig)), run.three_shots_saved)
    if killed:
        run.until_killed(rig.start_program(), run.recover)
    else:
        assert run.shown == 3, run
    run.check(rig)
    return killed


def kill_recovery(run, rig):
    """A session ends with the power; the program is killed while it saves it."""
    program = rig.start_program()
    run.three_shots(program)
    program.process.kill()
    program.end()
    killed = run.until_killed(rig.start_program(run.killer(rig)), run.recover)
    if killed:
        run.until_killed(rig.start_program(), run.recover)
    run.check(rig)
    return killed


def series(when, play):
    """Kills at call 1, 2, 3 ... until play ends by itself; the runs that were killed."""
    numbers = harness.chosen(SHARE, f"{play.__name__} {when}")
    turn = threading.Lock()
    finished = threading.Event()
    killed = []
    errors = []

    def work():
        while not finished.is_set() and not errors:
            with turn:
                run = Run(when, next(numbers))
            try:
                with harness.Rig("--unpaced", "--quick", "--seed", str(run.number)) as rig:
                    if play(run, rig):
                        killed.append(run)
                    else:
                        finished.set()
            except Exception as error:  # the call that it came at matters most
                errors.append(f"{run}: {error!r}")

    with concurrent.futures.ThreadPoolExecutor(WORKERS) as pool:
        for worker in [pool.submit(work) for _ in range(WORKERS)]:
            worker.result()
    return killed, errors


class KillAtEveryWrite(unittest.TestCase):
    def run_series(self, name, when, play, least):
        began = time.monotonic()
        killed, errors = series(when, play)
        self.assertFalse(errors, "\n".join(errors))
        shown = [sum(run.shown == count for run in killed) for count in range(4)]
        print(
            f"{name}: {len(killed)} kills, {shown} of them with 0, 1, 2, 3 shots shown, "
            f"{time.monotonic() - began:.0f} s",
            flush=True,
        )
        # If fewer calls than this change files, the watch does not see them.
        self.assertGreaterEqual(len(killed), least // SHARE)
        return shown

    def run_session_series(self, name, when):
        shown = self.run_series(name, when, kill_session, 30)
        self.assertTrue(all(shown) or SHARE > 1, "there was no kill in one of the shots")

    def test_session_before_each_call(self):
        self.run_session_series("session, before the call", "before")

    def test_session_after_each_call(self):
        self.run_session_series("session, after the call", "after")

    def test_session_in_the_middle_of_each_write(self):
        self.run_session_series("session, half of the write", "half")

    def test_recovery_before_each_call(self):
        self.run_series("recovery, before the call", "before", kill_recovery, 10)

    def test_recovery_after_each_call(self):
        self.run_series("recovery, after the call", "after", kill_recovery, 10)


if __name__ == "__main__":
    print(f"DAVO_SEED={harness.SEED}", flush=True)
    sys.exit(unittest.main())
