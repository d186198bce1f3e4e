# SPDX-License-Identifier: GPL-3.0-or-later
"""Records that the operator fetches from the instrument, and those that he calls up again."""

import json
import pathlib
import re
import subprocess
import sys
import unittest

import expected_download
import expected_record
import harness

XLRD = "/usr/bin/python3"  # the one that has xlrd
ENGINE = pathlib.Path("/usr/lib/libreoffice/program/libsclo.so")
LOST = (
    "The connection to the DAVO was lost.\\nPlease check the cable and the adapter, then try again."
    "\\nEverything that was measured is kept."
)
# The tenth record has many tests and takes seconds.
MANY = "Downloading TST_010 from DAVO, Please Wait..."
SHEETS = "import json,sys,xlrd; print(json.dumps(xlrd.open_workbook(sys.argv[1]).sheet_names()))"


def list_memory(program, count):
    program.do(
        "wait frmMain",
        "menu mnuDownload",
        "wait frmTestList",
        f'waitText lblStatus "Total Records: {count}"',
        f'waitText lblSelect "Select: 0 of {count}"',
        "waitText cmdSave Save",
    )


def download_all(program, count):
    list_memory(program, count)
    program.do(
        "key Ctrl+A",
        f'waitText lblSelect "Select: {count} of {count}"',
        "click cmdSave",
        f'waitText lblMessage "{count} of {count} records were saved."',
        "waitEnabled cmdSave",
    )


class Retrieval(unittest.TestCase):
    def assert_files(self, rig, names):
        """The data folder holds these records, byte for byte what went over the line."""
        log = expected_record.read_byte_log(rig.byte_log)
        directory, records = expected_download.replies(log)
        self.assertEqual(sorted(path.name for path in rig.data.iterdir()),
                         ["DIRDNLD.DNL", *sorted(name + ".txt" for name in names)])
        for name in names:
            number = name.removeprefix("TST_")
            expected = expected_download.record_file(directory, number, records[number])
            self.assertEqual((rig.data / (name + ".txt")).read_bytes(), expected, name)
        listed = (rig.data / "DIRDNLD.DNL").read_text("cp1252").split("\n")
        self.assertEqual(listed[0].rstrip("\r"), f"REC=={len(names):03}")
        self.assertEqual(sorted(line.split("!")[0] for line in listed[1:-1]), sorted(names))


class Download(Retrieval):
    def test_three_records_are_saved(self):
        with harness.Rig("--unpaced", "--quick", "--memory", "3", "--seed", "7") as rig:
            program = rig.start_program()
            download_all(program, 3)
            self.assertIsNone(program.prompt())
            self.assert_files(rig, ["TST_001", "TST_002", "TST_003"])
            program.do("click cmdExit", "waitGone frmTestList")
            self.assertEqual(harness.leave(program), 0)

    def test_an_existing_record_is_asked_for(self):
        with harness.Rig("--unpaced", "--quick", "--memory", "1", "--seed", "8") as rig:
            program = rig.start_program()
            program.do("wait frmMain")
            (rig.data / "TST_001.txt").write_bytes(b"an earlier record")
            list_memory(program, 1)
            question = (
                "The file TST_001 already exists. Do you want to replace the existing file? "
            )
            program.do("key Ctrl+A", "click cmdSave", f'answer Cancel "{question}"')
            program.do("waitEnabled cmdSave")
            self.assertEqual((rig.data / "TST_001.txt").read_bytes(), b"an earlier record")
            program.do("click cmdSave", f'answer Yes "{question}"')
            program.do('answer Ok "The record TST_001 shall be overwritten!"')
            program.do('waitText lblMessage "1 of 1 records were saved."')
            self.assert_files(rig, ["TST_001"])
            program.do("key Escape", "waitGone frmTestList")
            self.assertEqual(harness.leave(program), 0)

    def test_nothing_selected_is_said(self):
        with harness.Rig("--unpaced", "--quick", "--memory", "2", "--seed", "9") as rig:
            program = rig.start_program()
            list_memory(program, 2)
            program.do("click cmdSave", 'answer Ok "Please choose File(s) to Download."')
            program.do("click cmdExit", "waitGone frmTestList")
            self.assertEqual(harness.leave(program), 0)

    def test_the_cable_is_pulled_in_mid_record(self):
        with harness.Rig("--quick", "--memory", "12", "--seed", "7") as rig:
            program = rig.start_program()
            list_memory(program, 12)
            program.do("key Ctrl+A", "click cmdSave")
            program.do(f'waitText lblMessage "{MANY}"', "sleep 700")
            harness.end_group(rig.instrument)
            program.do(f'answer Ok "{LOST}"', "wait msgBox")
            reason, missing = program.prompt().split("\n")
            self.assertEqual(reason.rstrip("\r"), "The DAVO cannot be reached.")
            names = re.findall(r"TST_\d{3}", missing)
            self.assertEqual(names[0], "TST_010")
            program.do("answer Ok", "waitEnabled cmdSave")
            every = {f"TST_{number:03}" for number in range(1, 13)}
            self.assert_files(rig, sorted(every - set(names)))
            program.do("click cmdExit", "waitGone frmTestList")
            self.assertEqual(harness.leave(program), 0)

    def test_the_window_is_left_in_mid_record(self):
        with harness.Rig("--quick", "--memory", "12", "--seed", "7") as rig:
            program = rig.start_program()
            list_memory(program, 12)
            program.do("key Ctrl+A", "click cmdSave")
            program.do(f'waitText lblMessage "{MANY}"', "sleep 700")
            program.do("key Escape", "wait msgBox")
            reason, missing = program.prompt().split("\n")
            self.assertEqual(reason.rstrip("\r"), "The download was ended.")
            names = re.findall(r"TST_\d{3}", missing)
            self.assertEqual(names[0], "TST_010")
            program.do("answer Ok", "waitGone frmTestList")
            self.assertFalse((rig.data / "TST_010.txt").exists())
            self.assertEqual(harness.leave(program), 0)


class Recall(Retrieval):
    @unittest.skipUnless(ENGINE.exists(), "this machine has no LibreOffice Calc")
    def test_a_record_becomes_a_workbook(self):
        with harness.Rig("--unpaced", "--quick", "--memory", "3", "--seed", "7") as rig:
            reports = rig.folder / "Shots_Excel"
            reports.mkdir(exist_ok=True)
            program = rig.start_program()
            download_all(program, 3)
            program.do("click cmdExit", "waitGone frmTestList", "menu mnuRecall")
            program.do(
                "wait frmTestList",
                'waitText lblStatus "Total Records: 3"',
                "waitText cmdSave View",
                "click cmdSave",
                'answer Ok "Please choose a File to View."',
                "key Down",
                'waitText lblSelect "Select: 1 of 3"',
                "key Return",
            )
            program.do("wait msgBox")
            stored = re.search(r"stored as (.*)", program.prompt())
            self.assertIsNotNone(stored, program.prompt())
            workbook = pathlib.Path(stored[1])
            self.assertEqual(workbook.parent, reports)
            self.assertEqual(workbook.suffix, ".xls")
            tests = (rig.data / (workbook.stem + ".txt")).read_text("cp1252").count("REC NUMBER:")
            done = subprocess.run(
                [XLRD, "-c", SHEETS, workbook], check=True, capture_output=True, timeout=60
            )
            sheets = json.loads(done.stdout)
            self.assertEqual(
                [sheet for sheet in sheets if sheet.startswith("Test ")],
                [f"Test {number}-Graph" for number in range(1, tests + 1)],
            )
            program.do("answer Ok", "waitEnabled cmdSave", "click cmdExit", "waitGone frmTestList")
            self.assertEqual(harness.leave(program), 0)


if __name__ == "__main__":
    sys.exit(unittest.main())
