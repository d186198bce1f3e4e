# SPDX-License-Identifier: GPL-3.0-or-later
"""Record files are renamed, copied, deleted and laid over each other in the real program."""

import pathlib
import sys
import unittest

import expected_report
import harness
from record_headers_test import record

QUICK = ("--unpaced", "--quick", "--seed", "17")
ENGINE = pathlib.Path("/usr/lib/libreoffice/program/libsclo.so")
CURVE = [(0.01, 10.0), (0.02, 40.0), (0.05, 120.0), (0.1, 180.0), (0.5, 220.0), (2.0, 240.0)]


def full_record(name, numbers):
    """A record file whose tests have a curve; a test's voltages are its number times the curve's."""
    text = record(name, []).decode("cp1252")
    for number in numbers:
        text += f"REC NUMBER: {number}\r\n"
        for current, voltage in CURVE:
            text += f"CURRENT: {current:.4f}VOLTAGE: {voltage * number:.1f}\r\n"
        text += f"NUMBER OF DATA POINTS: {len(CURVE)}\r\n"
        text += "KNEE VOLTAGE: 180 VOLTS\r\nKNEE CURRENT: 0.1 AMPS\r\n"
        text += "EXCITATION CUR: 2 AMPS\r\nEXCITATION VTG: 240 VOLTS\r\n"
        text += "MEASURED RATIO: 240.1\r\nPOLARITY: IN PHASE\r\nPHASE ANGLE: 0.5 DEG\r\n"
        text += "NAMEPLATE RATIO: 240 (1200:5)\r\nPERCENT ERROR: 0.04%\r\n"
        text += "KNEE POINT TYPE: ASA 10%VTG -> 50%CUR\r\n"
    return text.encode("cp1252")


class FileUtilities(unittest.TestCase):
    def setUp(self):
        self.rig = harness.Rig(*QUICK)
        self.addCleanup(self.rig.close)
        self.files = {name: full_record(name, [1, 2]) for name in ("A1", "B2", "C3")}
        for name, content in self.files.items():
            (self.rig.data / f"{name}.txt").write_bytes(content)
        self.program = self.rig.start_program()
        self.program.do("wait frmMain")

    def open(self, item="mnuFileUtil"):
        self.program.do(f"menu {item}", "wait frmFileUtilOverlay", "click lvTest", "key Down", "key Up")

    def names(self, folder):
        return sorted(path.name for path in folder.iterdir())

    def test_a_record_is_renamed(self):
        self.open()
        self.program.do("click cmdOp0", "wait inputBox", "type txtInput Fresh", "key Return")
        self.program.do("answer Yes \"Rename file: 'A1'\\nTo: 'Fresh' ? \"")
        self.program.do("waitGone frmFileUtilOverlay")
        self.assertEqual(
            self.names(self.rig.data), ["B2.txt", "C3.txt", "DIRDNLD.DNL", "Fresh.txt"]
        )
        expected = self.files["A1"].replace(b"TEST NUMBER: A1", b"TEST NUMBER: Fresh", 1)
        self.assertEqual((self.rig.data / "Fresh.txt").read_bytes(), expected)
        self.assertIn(b"Fresh!", (self.rig.data / "DIRDNLD.DNL").read_bytes())
        self.assertEqual(harness.leave(self.program), 0)

    def test_records_are_copied(self):
        target = self.rig.folder / "disk"
        target.mkdir()
        (target / "B2.txt").write_bytes(b"there")
        self.open()
        self.program.do("key Ctrl+A", "click cmdOp1", "wait frmCopyFile")
        self.program.do("waitGone frmFileUtilOverlay", f'type txtPath "{target}"')
        self.program.do("grab copy frmCopyFile", "click cmdOK")
        self.program.do(
            'answer No "The file B2already  exists.  Do you want to replace the existing file? "',
            f'answer Ok "2 of 3 copied to {target}/"',
            "waitGone frmCopyFile",
        )
        self.assertEqual(self.names(target), ["A1.txt", "B2.txt", "C3.txt"])
        self.assertEqual((target / "A1.txt").read_bytes(), self.files["A1"])
        self.assertEqual((target / "B2.txt").read_bytes(), b"there")
        # The menu can be used again.
        self.open()
        self.program.do("click cmdExit", "waitGone frmFileUtilOverlay")
        self.assertEqual(harness.leave(self.program), 0)

    def test_records_are_deleted(self):
        self.open()
        self.program.do("key Ctrl+A", "click cmdOp2")
        self.program.do('answer Yes "Delete file: A1\\n"', 'answer No "Delete file: B2\\n"')
        self.program.do('answer Cancel "Delete file: C3\\n"', "waitGone frmFileUtilOverlay")
        self.assertEqual(self.names(self.rig.data), ["B2.txt", "C3.txt", "DIRDNLD.DNL"])
        self.assertEqual(harness.leave(self.program), 0)

    @unittest.skipUnless(ENGINE.exists(), "this machine has no LibreOffice Calc")
    def test_two_tests_are_laid_over_each_other(self):
        self.open("mnuOverlay")
        self.program.do("click cmdOp0", "click lvTest", "key End", "click lstTest")
        self.program.do("key End", "click cmdOp1")
        self.assertEqual(self.program.text("txtTest1"), "A1 - TEST NUMBER:1")
        self.assertEqual(self.program.text("txtTest2"), "C3 - TEST NUMBER:2")
        workbook = self.rig.excel / "2Graphs.xls"
        self.program.do("click cmdOp2", f'answer Ok "{harness.NO_VIEWER}{workbook}"')
        self.program.do("waitEnabled cmdOp2", "click cmdExit", "waitGone frmFileUtilOverlay")
        sheets = expected_report.read_report(workbook)
        self.assertEqual(set(sheets), {"Test 1-Graph", "Test 2-Graph", "SummaryGraph"})
        for number, name in ((1, "A1"), (2, "C3")):
            sheet = sheets[f"Test {number}-Graph"]
            self.assertEqual(sheet["B5"], "2Graphs")
            points = {
                (sheet[f"B{row}"], sheet[f"C{row}"])
                for row in range(19, 60)
                if f"B{row}" in sheet
            }
            self.assertLessEqual({(i, v * number) for i, v in CURVE}, points, name)
        self.assertEqual(harness.leave(self.program), 0)


if __name__ == "__main__":
    sys.exit(unittest.main())
