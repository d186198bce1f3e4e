# SPDX-License-Identifier: GPL-3.0-or-later
"""The report of a program that was built without LibreOffice's interface: it says so once, and makes a
workbook with a chart."""

import sys
import unittest
import zipfile

import harness

HINT = ("Reports are made as .xlsx workbooks. Install LibreOffice Calc to have them as .xls workbooks "
        "with the letterhead of DAVO_Header.xls.")


class ReportWithoutCalc(unittest.TestCase):
    def test_the_report_is_an_xlsx_workbook_and_the_program_says_so_once(self):
        with harness.Rig("--unpaced", "--quick", "--seed", "6") as rig:
            program = rig.start_program()
            program.do("wait frmMain")
            for name, said in (("T1", True), ("T2", False)):
                harness.open_test_window(program)
                harness.full_shot(program, first=True)
                harness.save_session(program, f"{name}.txt", view=True)
                if said:
                    program.do("wait msgBox")
                    self.assertEqual(program.prompt(), HINT)
                    program.do("answer Ok")
                workbook = rig.excel / f"{name}.xlsx"
                program.do('waitContains msgBox "stored as"')
                self.assertIn(str(workbook), program.prompt())
                program.do("answer Ok", "waitGone frmCControl")
                with zipfile.ZipFile(workbook) as parts:
                    self.assertIn("xl/charts/chart1.xml", parts.namelist())
                self.assertFalse((rig.excel / f"{name}.xls").exists())
            self.assertEqual(harness.leave(program), 0)


if __name__ == "__main__":
    sys.exit(unittest.main())
