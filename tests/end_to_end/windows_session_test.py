# SPDX-License-Identifier: GPL-3.0-or-later
"""A whole session with the Windows program: its record file is what went over the line, and what the
program for this machine writes of the very same conversation."""

import datetime
import os
import re
import sys
import threading
import tty
import unittest

import expected_record
import harness
import openpyxl
import windows_rig
from session_test import HEADER, NOTES, Session, fill_header, stored

LINUX_PROGRAM = os.environ["DAVO_LINUX_PROGRAM"]
LINUX_PLUGINS = os.environ["DAVO_LINUX_PLUGINS"]
PICTURES = os.environ.get("DAVO_WINDOWS_PICTURES", "")
WHEN = re.compile(rb"DATE: .*\r\nTIME: .*\r\n")


class Replay:
    """An instrument that says what another one said, each time after the same words of the program."""

    def __init__(self, byte_log, link):
        self.events = expected_record.read_byte_log(byte_log)
        self.difference = None
        self.master, self.slave = os.openpty()
        tty.setraw(self.slave)
        link.unlink(missing_ok=True)
        link.symlink_to(os.ttyname(self.slave))
        self.player = threading.Thread(target=self.play, daemon=True)
        self.player.start()

    def play(self):
        for to_pc, said in self.events:
            if to_pc:
                os.write(self.master, said)
                continue
            heard = b""
            while len(heard) < len(said):
                heard += os.read(self.master, len(said) - len(heard))
            if heard != said:
                self.difference = (said, heard)
                return


class LinuxRig(harness.Rig):
    """The program for this machine with a conversation of another rig."""

    command = [LINUX_PROGRAM]

    def __init__(self, byte_log):
        super().__init__("--unpaced", "--quick")
        self.environment["QT_PLUGIN_PATH"] = LINUX_PLUGINS
        harness.end_group(self.instrument)
        self.replay = Replay(byte_log, self.port)


def play(rig, pictures=False):
    """Three shots, the second dropped, one of the ratio only; the record file's bytes."""
    grab = (lambda name: program.do(f"grab {name}")) if pictures else (lambda name: None)
    program = rig.start_program()
    program.do("wait frmMain")
    grab("main-window")
    harness.open_test_window(program)
    grab("test-window")
    fill_header(program, HEADER, NOTES)
    harness.type_nameplate(program)
    harness.full_shot(program, first=True)
    grab("shot-complete")
    harness.full_shot(program)
    harness.repeat_shot(program)
    harness.full_shot(program)
    harness.ratio_shot(program)
    harness.save_session(program, "T17.txt")
    grab("main-window-with-records")
    return program, (rig.data / "T17.txt").read_bytes()


class WindowsSession(Session):
    def test_the_record_file_is_what_went_over_the_line(self):
        began = datetime.datetime.now().replace(second=0, microsecond=0)
        options = ("--unpaced", "--quick", "--seed", "5")
        with windows_rig.WindowsRig(*options) as rig:
            program, record = play(rig, pictures=True)
            self.assertEqual(harness.leave(program), 0)
            if PICTURES:
                rig.keep_pictures(PICTURES)
            shots = expected_record.shots_of(rig.byte_log)
            self.assertEqual([shot.ratio_only for shot in shots], [False, False, False, True])
            del shots[1]
            self.check(
                rig, "T17.txt", began, [stored(field) for field in HEADER], shots, ("1200", "5"),
                "\r\n".join(NOTES),
            )
            with LinuxRig(rig.byte_log) as own:
                program, other = play(own)
                self.assertEqual(harness.leave(program), 0)
                self.assertIsNone(own.replay.difference)
        self.assertEqual(len(WHEN.findall(record)), 1)
        self.assertEqual(WHEN.sub(b"", record), WHEN.sub(b"", other))

    def test_a_killed_session_is_offered_again_and_reported(self):
        with windows_rig.WindowsRig("--unpaced", "--quick", "--seed", "6") as rig:
            program = rig.start_program()
            harness.open_test_window(program)
            harness.full_shot(program, first=True)
            program.process.kill()
            program.wait_end()

            program = rig.start_program()
            program.do("wait lblWhen0")
            self.assertIn(", 1 shot", program.control("lblWhen0")["text"])
            program.do("click cmdSaveSession0", 'chooseFile "Kept.txt"', "waitGone sessionCards")
            kept = (rig.data / "Kept.txt").read_bytes()
            shots = expected_record.shots_of(rig.byte_log)
            self.assertEqual(len(shots), 1)
            self.assertEqual(
                kept,
                expected_record.record_file(
                    "Kept.txt", *expected_record.begun(kept), [" " * 20] * 8, shots, None, None
                ),
            )
            # The next session ends with a report, which without Excel is the built-in renderer's.
            harness.open_test_window(program)
            harness.full_shot(program, first=True)
            harness.save_session(program, "T18.txt", view=True)
            workbook = rig.excel / "T18.xlsx"
            harness.wait_until(workbook.exists, "the workbook")
            while program.window("frmCControl") or program.prompt():
                if program.prompt():
                    program.do("answer Ok")
            sheets = openpyxl.load_workbook(workbook)
            self.assertTrue(any(sheet._charts for sheet in sheets.worksheets), sheets.sheetnames)
            self.assertEqual(harness.leave(program), 0)

    def test_settings_are_written_to_the_registry_as_texts(self):
        with windows_rig.WindowsRig("--unpaced", "--quick") as rig:
            program = rig.start_program()
            program.do("wait frmMain")
            self.assertEqual(harness.leave(program), 0)
            values = windows_rig.stored()
            data = windows_rig.in_windows(rig.data) + "\\"
            self.assertEqual(values[("DATAPATH", "PATH", "PATHVAL")], ("REG_SZ", data))
            self.assertTrue(all(kind == "REG_SZ" for kind, _ in values.values()), values)


if __name__ == "__main__":
    sys.exit(unittest.main())
