# SPDX-License-Identifier: GPL-3.0-or-later
"""The header of a saved record is edited in the real program; the file is checked here, alone."""

import signal
import sys
import unittest

import harness

QUICK = ("--unpaced", "--quick", "--seed", "11")
KEYS = ("COMPANY", "STATION", "CIRCUIT", "MFR", "MODEL", "SN", "COMMENTS", "OPERATOR")
KILLED = -signal.SIGKILL
SHARE = harness.share_of(4)  # of the kills


def record(name, texts, header=None, notes=None):
    """The bytes of a record file; texts: for each test its description and its notes."""
    lines = [f"TEST NUMBER: {name}", "DATE: 11/21/26", "TIME: 10:15", f"# OF SHOTS: {len(texts):02}"]
    values = dict({key: key.capitalize() for key in KEYS}, **(header or {}))
    lines += [f"{key}: {values[key]:<20}" for key in KEYS]
    for number, (description, test_notes) in enumerate(texts, 1):
        lines.append(f"REC NUMBER: {number}")
        if description:
            lines.append(f"TEST DESCRIPTION: {description:<20}")
        if test_notes:
            lines.append(f"TEST NOTES: {test_notes:<20}")
        lines += ["CURRENT: 0.0124VOLTAGE: 152.3", "NUMBER OF DATA POINTS: 1"]
        lines += ["KNEE VOLTAGE: 152.3 VOLTS", "KNEE CURRENT: 0.02 AMPS"]
        lines += ["EXCITATION CUR: 0.012 AMPS", "EXCITATION VTG: 100 VOLTS"]
        lines += ["MEASURED RATIO: 240.1", "POLARITY: IN PHASE", "PHASE ANGLE: 0.5 DEG"]
        lines += ["NAMEPLATE RATIO: 240 (1200:5)", "PERCENT ERROR: 0.04%"]
        lines.append("KNEE POINT TYPE: ASA 10%VTG -> 50%CUR")
    if notes:
        lines += ["NOTES:", *notes]
    return "".join(line + "\r\n" for line in lines).encode("cp1252")


TEXTS = [("first", ""), ("", "dry"), ("", "")]
OLD = record("T1", TEXTS, notes=["old notes"])
NEW = record(
    "T1",
    [("first", ""), ("second", "dry"), ("", "")],
    header={"OPERATOR": "Miller"},
    notes=["new notes"],
)


def choose_first(program):
    """Opens the editor, chooses its first record and the second test of it."""
    program.do("wait frmMain", "menu mnuSetDescr", "wait frmSetDescr", "click lvTest", "key Return")
    program.do("waitEnabled cmdSave", 'waitText lblFilename "T1 ** 11/21/26 ** 03"')
    program.do("click lstTest", "key Home", "key Down", "waitText txtTestNumData 2")


def edit(program):
    choose_first(program)
    program.do("type txtTestDescr second", "type txtHeader7 Miller", "click cmdNotes")
    program.do("wait frmNotepad", 'type rt "new notes"', "close frmNotepad", "waitGone frmNotepad")


class Editor(unittest.TestCase):
    def setUp(self):
        self.rig = harness.Rig(*QUICK)
        self.addCleanup(self.rig.close)
        self.file = self.rig.data / "T1.txt"
        self.file.write_bytes(OLD)
        self.other = record("T2", [("", "")])
        (self.rig.data / "T2.txt").write_bytes(self.other)

    def test_the_exit_button_writes_back(self):
        program = self.rig.start_program()
        edit(program)
        self.assertEqual(self.file.read_bytes(), OLD)
        program.do("grab editor frmMain", "click cmdExit", "waitGone frmSetDescr")
        self.assertEqual(self.file.read_bytes(), NEW)
        # The menu can be used again.
        program.do("menu mnuSetDescr", "wait frmSetDescr", "click cmdExit", "waitGone frmSetDescr")
        self.assertEqual(harness.leave(program), 0)
        self.assertEqual((self.rig.data / "T2.txt").read_bytes(), self.other)
        names = sorted(path.name for path in self.rig.data.iterdir())
        self.assertEqual(names, ["DIRDNLD.DNL", "T1.txt", "T2.txt"])

    def test_the_frame_writes_back(self):
        program = self.rig.start_program()
        edit(program)
        program.do("close frmMain")
        self.assertEqual(program.wait_end(), 0)
        self.assertEqual(self.file.read_bytes(), NEW)

    def test_the_end_of_the_session_writes_back(self):
        program = self.rig.start_program()
        edit(program)
        program.process.send_signal(signal.SIGTERM)
        self.assertEqual(program.wait_end(10), 0)
        self.assertEqual(self.file.read_bytes(), NEW)

    def test_a_file_that_has_gone_keeps_the_window(self):
        program = self.rig.start_program()
        edit(program)
        self.file.unlink()
        program.do("click cmdExit", "wait msgBox")
        question = program.prompt()
        self.assertRegex(question, "^Run-time error '53': File not found: ")
        self.assertTrue(question.endswith(
            "The changes to the file 'T1' are not saved. Do you want to leave without them?"
        ))
        program.do("answer No", "waitText txtTestDescr second")
        self.file.write_bytes(OLD)
        program.do("click cmdExit", "waitGone frmSetDescr")
        self.assertEqual(self.file.read_bytes(), NEW)
        self.assertEqual(harness.leave(program), 0)

    def test_a_kill_leaves_the_old_file_or_the_new_one(self):
        # The list is written once before and names no test's text, so that the calls counted are
        # those of the record.
        new = record("T1", [("first", ""), ("second", "dry"), ("", "")], notes=["old notes"])
        program = self.rig.start_program()
        program.do("wait frmMain")
        self.assertEqual(harness.leave(program), 0)
        seen = []
        for when in ("before", "half", "after"):
            for number in harness.chosen(SHARE, when):
                self.file.write_bytes(OLD)
                program = self.rig.start_program({
                    "LD_PRELOAD": harness.KILL_AT,
                    "DAVO_KILL_FOLDERS": str(self.rig.data),
                    "DAVO_KILL_AT": str(number),
                    "DAVO_KILL_WHEN": when,
                })
                choose_first(program)
                program.do("type txtTestDescr second")
                try:
                    program.do("click cmdExit", "waitGone frmSetDescr")
                    self.assertEqual(harness.leave(program), 0)
                except harness.DriverFailed:
                    self.assertEqual(program.wait_end(), KILLED)
                program.end()
                left = self.file.read_bytes()
                self.assertIn(left, (OLD, new), f"killed {when} call {number}")
                if program.process.returncode != KILLED:
                    self.assertEqual(left, new)
                    break
                seen.append(left == new)
        # Making, writing, flushing and renaming: before, torn, after.
        self.assertGreaterEqual(len(seen), 12 // SHARE)
        if SHARE == 1:
            self.assertEqual(set(seen), {False, True})


if __name__ == "__main__":
    print(f"DAVO_SEED={harness.SEED}", flush=True)
    sys.exit(unittest.main())
