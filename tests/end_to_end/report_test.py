# SPDX-License-Identifier: GPL-3.0-or-later
"""The report that is asked for at the end of a session, from the question to the workbook."""

import pathlib
import sys
import time
import unittest

import expected_report
import harness

QUICK = ("--unpaced", "--quick", "--seed", "31")
ENGINE = pathlib.Path("/usr/lib/libreoffice/program/libsclo.so")


def engines(rig):
    """The processes of this rig's programs that make reports."""
    found = []
    for entry in pathlib.Path("/proc").glob("[0-9]*"):
        try:
            command = (entry / "cmdline").read_bytes()
        except OSError:  # it has just ended
            continue
        if b"soffice.bin" in command and str(rig.folder).encode() in command:
            found.append(int(entry.name))
    return found


@unittest.skipUnless(ENGINE.exists(), "this machine has no LibreOffice Calc")
class Report(unittest.TestCase):
    def save_and_view(self, rig, program, name):
        """A session of two shots whose report is asked for; the path of the workbook."""
        harness.open_test_window(program)
        harness.type_nameplate(program)
        harness.full_shot(program, first=True)
        harness.ratio_shot(program)
        harness.save_session(program, name + ".txt", view=True)
        return rig.excel / (name + ".xls")

    def await_report(self, program, workbook):
        """Nothing shows a workbook here, which is said with the place where it is."""
        harness.wait_until(program.prompt, "the end of the report")
        self.assertEqual(program.prompt(), harness.NO_VIEWER + str(workbook))
        program.do(f'answer Ok "{harness.NO_VIEWER}{workbook}"', "waitGone frmCControl")

    def assert_no_engine_remains(self, rig):
        harness.wait_until(lambda: not engines(rig), "the end of the engine", 15)
        left = list((rig.folder / ".cache").rglob("calc-*"))
        self.assertEqual(left, [], "the engine's folders")

    def test_yes_makes_a_workbook_of_the_record(self):
        with harness.started(*QUICK) as (rig, program):
            workbook = self.save_and_view(rig, program, "R1")
            began = time.monotonic()
            self.await_report(program, workbook)
            print(f"report with a cold engine: {time.monotonic() - began:.1f} s", flush=True)
            sheets = expected_report.read_report(workbook)
            self.assertEqual(expected_report.differences(rig.data / "R1.txt", sheets), [])
            shown = [row for row in range(19, 101) if f"B{row}" in sheets["Test 1-Graph"]]
            self.assertGreater(len(shown), 32, "the measured points and the grid's")
            self.assertTrue((rig.excel / "DAVO_Header.xls").exists())
            self.assertTrue(engines(rig), "it stays for the next report")
            self.assertEqual(harness.leave(program), 0)
            self.assert_no_engine_remains(rig)

    def test_a_second_report_replaces_the_first(self):
        with harness.Rig(*QUICK) as rig:
            (rig.excel / "R1.xls").write_bytes(b"an earlier report")
            program = rig.start_program()
            workbook = self.save_and_view(rig, program, "R1")
            self.await_report(program, workbook)
            self.assertIn("Test 1-Graph", expected_report.read_report(workbook))
            self.assertEqual(harness.leave(program), 0)

    def test_a_missing_excel_folder_is_said_and_the_record_stands(self):
        with harness.Rig(*QUICK) as rig:
            rig.excel.rmdir()
            program = rig.start_program()
            self.save_and_view(rig, program, "R1")
            harness.wait_until(program.prompt, "the error")
            self.assertRegex(program.prompt(), "^Run-time error '[0-9]+': ")
            program.do("answer Ok", "waitGone frmCControl")
            self.assertTrue((rig.data / "R1.txt").exists())
            self.assertEqual(harness.leave(program), 0)

    def test_exit_leaves_the_report(self):
        with harness.started(*QUICK) as (rig, program):
            workbook = self.save_and_view(rig, program, "R1")
            harness.wait_until(
                lambda: program.window("frmCControl")["title"].startswith(harness.PLOTTING),
                "the caption",
            )
            program.do("click cmdExit", "waitGone frmCControl")
            self.assertIsNone(program.prompt())
            self.assertFalse(workbook.exists())
            self.assertTrue((rig.data / "R1.txt").exists())
            self.assertEqual(harness.leave(program), 0)
            self.assert_no_engine_remains(rig)

    def test_a_killed_program_leaves_no_engine(self):
        with harness.started(*QUICK) as (rig, program):
            workbook = self.save_and_view(rig, program, "R1")
            self.await_report(program, workbook)
            self.assertTrue(engines(rig))
            program.process.kill()
            harness.wait_until(lambda: not engines(rig), "the end of the engine", 15)

    def test_a_program_killed_during_a_report_leaves_no_engine(self):
        with harness.started(*QUICK) as (rig, program):
            workbook = self.save_and_view(rig, program, "R1")
            harness.wait_until(lambda: engines(rig), "the engine")
            program.process.kill()
            harness.wait_until(lambda: not engines(rig), "the end of the engine", 15)
            self.assertFalse(workbook.exists())

    def test_the_end_of_the_desktop_during_a_report_ends_both(self):
        with harness.started(*QUICK) as (rig, program):
            self.save_and_view(rig, program, "R1")
            harness.wait_until(lambda: engines(rig), "the engine")
            program.process.terminate()
            self.assertEqual(program.wait_end(15), 0)
            self.assert_no_engine_remains(rig)


if __name__ == "__main__":
    sys.exit(unittest.main())
