# SPDX-License-Identifier: GPL-3.0-or-later
"""What goes wrong around a session: the cable, the disk, the operator's ESC key."""

import os
import pathlib
import re
import shutil
import subprocess
import sys
import time
import unittest

import expected_record
import harness

QUICK = ("--unpaced", "--quick", "--seed", "7")
GONE = "The data folder is not there any more. Do you want to save the test record as '{}'? "
OFFER = re.compile(r"\d\d/\d\d/\d\d, \d\d:\d\d to \d\d:\d\d:\d\d, 1 shot")


class Faults(unittest.TestCase):
    def assert_record(self, path, shots):
        actual = path.read_bytes()
        expected = expected_record.record_file(
            path.name, *expected_record.begun(actual), [" " * 20] * 8, shots, ("1200", "5")
        )
        self.assertEqual(actual, expected)

    def one_shot(self, program):
        harness.open_test_window(program)
        harness.type_nameplate(program)
        harness.full_shot(program, first=True)

    def one_shot_and_a_half(self, program):
        """Up to the readings of the second shot's saturation test."""
        self.one_shot(program)
        harness.start_shot(program)
        harness.saturate(program)

    def plug_in_again(self, rig):
        rig.byte_log = rig.folder / "line2.log"
        rig.start_instrument(*QUICK)

    def assert_offered(self, program):
        program.do("wait lblWhen0")
        self.assertRegex(program.control("lblWhen0")["text"], OFFER)

    def save_offered(self, program):
        self.assert_offered(program)
        program.do("click cmdSaveSession0", "chooseFile T1.txt", "waitGone sessionCards")

    def save_elsewhere(self, rig, program, data_is_gone=False):
        elsewhere = rig.folder / "stick"
        elsewhere.mkdir()
        target = elsewhere / "Shots_Data" / "T1.txt"
        program.do(f'answer Yes "{harness.SAVE}"', f"chooseFile {elsewhere}/T1.txt")
        if data_is_gone:
            program.do(f'answer Yes "{GONE.format(target)}"')
        harness.finish_save(program)
        self.assert_record(target, expected_record.shots_of(rig.byte_log))

    def assert_no_prompt_follows(self, program):
        end = time.monotonic() + 1.5
        while time.monotonic() < end:
            self.assertIsNone(program.prompt())
            time.sleep(0.1)


class Unplugged(Faults):
    def test_the_cable_is_pulled_in_mid_shot(self):
        with harness.session(*QUICK) as (rig, program):
            self.one_shot_and_a_half(program)
            harness.end_group(rig.instrument)
            shots = expected_record.shots_of(rig.byte_log)
            program.do(f'answer Ok "{harness.LOST}"')
            self.assert_no_prompt_follows(program)
            program.do("waitEnabled cmdExit", "waitDisabled cmdContinue")

            # The broken shot leaves nothing to ask about; the shot before it is offered on the start
            # page, without the instrument.
            harness.close_test_window(program)
            self.save_offered(program)
            self.plug_in_again(rig)
            self.assertEqual(len(shots), 1)
            harness.open_test_window(program)
            self.assert_record(rig.data / "T1.txt", shots)

            harness.type_nameplate(program)
            harness.full_shot(program, first=True)
            harness.save_session(program, "T2.txt")
            self.assert_record(rig.data / "T2.txt", expected_record.shots_of(rig.byte_log))

    def test_a_completed_shot_is_saved_without_the_instrument(self):
        with harness.session(*QUICK) as (rig, program):
            self.one_shot(program)
            harness.end_group(rig.instrument)
            program.do(f'answer Ok "{harness.LOST}"')
            self.assert_no_prompt_follows(program)
            harness.save_session(program, "T1.txt")
            self.assert_record(rig.data / "T1.txt", expected_record.shots_of(rig.byte_log))

    def test_the_session_goes_on_when_it_is_plugged_in_again(self):
        with harness.session(*QUICK) as (rig, program):
            self.one_shot_and_a_half(program)
            harness.end_group(rig.instrument)
            shots = expected_record.shots_of(rig.byte_log)
            program.do(f'answer Ok "{harness.LOST}"')
            self.plug_in_again(rig)
            # The broken shot is started anew; nothing is asked, since none was completed.
            program.do('waitText cmdStart "&Start Test"')
            harness.full_shot(program, first=True)
            harness.save_session(program, "T1.txt")
            self.assert_record(rig.data / "T1.txt", shots + expected_record.shots_of(rig.byte_log))

    def test_the_adapter_vanishes_in_the_first_shot(self):
        # The instrument's own fault: after that many bytes, in the saturation test.
        with harness.started(*QUICK, "--fault", "unplugged:260") as (rig, program):
            harness.open_test_window(program)
            harness.start_shot(program, first=True)
            program.do(f'waitText lblMessage "{harness.RANGE}"', "click cmdContinue")
            program.do(f'answer Ok "{harness.LOST}"')
            self.assert_no_prompt_follows(program)
            harness.close_test_window(program)
            self.assertEqual(harness.leave(program), 0)
            self.assertEqual(list(rig.data.glob("*.txt")), [])


class Escape(Faults):
    def abort_second_shot(self, rig, program):
        self.one_shot_and_a_half(program)
        program.do("key Escape", "waitGone frmCControl")
        self.assertIsNone(program.prompt(), "ESC asks nothing")
        harness.wait_until(
            lambda: (False, b"\x1b") in expected_record.read_byte_log(rig.byte_log),
            "ESC at the instrument",
        )

    def test_an_aborted_session_is_offered_at_the_next_start(self):
        with harness.session(*QUICK) as (rig, program):
            self.abort_second_shot(rig, program)
            self.assertEqual(harness.leave(program), 0)

            program = rig.start_main()
            self.save_offered(program)
            self.assert_record(rig.data / "T1.txt", expected_record.shots_of(rig.byte_log))

    def test_what_is_left_for_later_is_offered_again_by_the_next_program(self):
        with harness.session(*QUICK) as (rig, program):
            self.abort_second_shot(rig, program)
            program.do("wait lblWhen0", "click cmdLater0", "waitGone lblWhen0")
            harness.open_test_window(program)
            harness.close_test_window(program)
            self.assertEqual(harness.leave(program), 0)
            (kept,) = rig.scratch.glob("TESTFILE-*.txt")
            self.assertIn(expected_record.shots_of(rig.byte_log)[0].ratio.encode(), kept.read_bytes())
            self.assert_offered(rig.start_main())


class SmallDisk:
    """A folder on a file system of its own that can be filled."""

    def __init__(self, folder):
        self.folder = folder
        self.filler = folder / "filler"

    def __enter__(self):
        self.folder.mkdir(parents=True, exist_ok=True)
        command = ["mount", "-t", "tmpfs", "-o", "size=256k", "tmpfs", str(self.folder)]
        mounted = subprocess.run(command, capture_output=True, text=True, check=False)
        if mounted.returncode != 0:
            raise unittest.SkipTest(f"no small disk here, it takes root: {mounted.stderr.strip()}")
        return self

    def fill(self):
        with open(self.filler, "wb", buffering=0) as file:
            for size in (4096, 1):
                try:
                    while file.write(b"x" * size):
                        pass
                except OSError:
                    continue

    def empty(self):
        self.filler.unlink()

    def __exit__(self, *_):
        subprocess.run(["umount", "-l", str(self.folder)], check=True)


class Disk(Faults):
    def test_a_full_disk_during_the_save_leads_to_a_save_elsewhere(self):
        with harness.Rig(*QUICK) as rig, SmallDisk(rig.data) as disk:
            program = rig.start_program()
            self.one_shot(program)
            old = b"an older record\r\n"
            (rig.data / "T1.txt").write_bytes(old)
            disk.fill()
            program.do("click cmdExit", f'answer Yes "{harness.SAVE}"', "chooseFile T1.txt")
            program.do("answer Yes \"File 'T1.txt' exists. Do you want to override? \"")
            program.do("waitContains msgBox \"The test record was not saved.\"")
            self.assertIn("Disk full", program.prompt())
            program.do("answer Ok")
            self.assertEqual((rig.data / "T1.txt").read_bytes(), old)

            self.save_elsewhere(rig, program)
            self.assertEqual(harness.leave(program), 0)
            self.assertEqual(sorted(os.listdir(rig.data)), ["T1.txt", "filler"])

    def test_a_full_disk_under_the_session_is_said_and_nothing_is_lost(self):
        with harness.Rig(*QUICK) as rig, SmallDisk(rig.scratch) as disk:
            program = rig.start_program()
            harness.open_test_window(program)
            harness.type_nameplate(program)
            harness.start_shot(program, first=True)
            program.do(f'waitText lblMessage "{harness.RANGE}"')
            disk.fill()
            harness.saturate(program)
            harness.await_ratio(program)
            program.do(
                "click cmdContinue",
                'waitContains msgBox "The shot is complete, but it is not yet safe on disk: "',
            )
            self.assertIn("Disk full", program.prompt())
            program.do("answer Ok", "click cmdExit")
            program.do(
                'waitContains msgBox "The last shot could not be written; the session is kept."'
            )
            program.do("answer Ok")
            disk.empty()
            harness.save_session(program, "T1.txt")
            self.assert_record(rig.data / "T1.txt", expected_record.shots_of(rig.byte_log))
            self.assertEqual(harness.leave(program), 0)

    def test_a_vanished_folder_leads_to_a_save_elsewhere(self):
        with harness.session(*QUICK) as (rig, program):
            self.one_shot(program)
            program.do("click cmdExit", f'answer Yes "{harness.SAVE}"', "wait cdFile")
            # The stick is pulled out while the dialog is open; a file bars its folder's place.
            shutil.rmtree(rig.data)
            rig.data.write_text("no folder any more")
            program.do("chooseFile T1.txt")
            program.do(f'answer Yes "{GONE.format(rig.data / "T1.txt")}"')
            program.do("waitContains msgBox \"The test record was not saved.\"")
            program.do("answer Ok")
            self.save_elsewhere(rig, program, data_is_gone=True)


if __name__ == "__main__":
    sys.exit(unittest.main())
