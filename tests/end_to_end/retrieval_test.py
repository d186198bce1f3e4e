# SPDX-License-Identifier: GPL-3.0-or-later
"""Records that the operator fetches from the instrument, and those that he calls up again."""

import pathlib
import re
import sys
import unittest

import expected_download
import expected_record
import expected_report
import harness

ENGINE = pathlib.Path("/usr/lib/libreoffice/program/libsclo.so")
# The tenth record has many tests and takes seconds.
MANY = "Downloading TST_010 from DAVO, Please Wait..."


def list_memory(program, count):
    program.do(
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
        with harness.session("--unpaced", "--quick", "--memory", "3", "--seed", "7") as (rig, program):
            download_all(program, 3)
            self.assertIsNone(program.prompt())
            self.assert_files(rig, ["TST_001", "TST_002", "TST_003"])
            program.do("click cmdExit", "waitGone frmTestList")

    def test_an_existing_record_is_asked_for(self):
        with harness.session("--unpaced", "--quick", "--memory", "1", "--seed", "8") as (rig, program):
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

    def test_nothing_selected_is_said(self):
        with harness.session("--unpaced", "--quick", "--memory", "2", "--seed", "9") as (rig, program):
            list_memory(program, 2)
            program.do("click cmdSave", 'answer Ok "Please choose File(s) to Download."')
            program.do("click cmdExit", "waitGone frmTestList")

    def download_until_mid_record(self, program):
        list_memory(program, 12)
        program.do("key Ctrl+A", "click cmdSave")
        program.do(f'waitText lblMessage "{MANY}"', "sleep 700")

    def assert_missing(self, program, why):
        """The prompt says why, and names the records that are not there; these."""
        reason, missing = program.prompt().split("\n")
        self.assertEqual(reason.rstrip("\r"), why)
        names = re.findall(r"TST_\d{3}", missing)
        self.assertEqual(names[0], "TST_010")
        return names

    def test_the_cable_is_pulled_in_mid_record(self):
        with harness.session("--quick", "--memory", "12", "--seed", "7") as (rig, program):
            self.download_until_mid_record(program)
            harness.end_group(rig.instrument)
            program.do(f'answer Ok "{harness.LOST}"', "wait msgBox")
            names = self.assert_missing(program, "The DAVO cannot be reached.")
            program.do("answer Ok", "waitEnabled cmdSave")
            every = {f"TST_{number:03}" for number in range(1, 13)}
            self.assert_files(rig, sorted(every - set(names)))
            program.do("click cmdExit", "waitGone frmTestList")

    def test_the_window_is_left_in_mid_record(self):
        with harness.session("--quick", "--memory", "12", "--seed", "7") as (rig, program):
            self.download_until_mid_record(program)
            program.do("key Escape", "wait msgBox")
            self.assert_missing(program, "The download was ended.")
            program.do("answer Ok", "waitGone frmTestList")
            self.assertFalse((rig.data / "TST_010.txt").exists())


class Recall(Retrieval):
    @unittest.skipUnless(ENGINE.exists(), "this machine has no LibreOffice Calc")
    def test_a_record_becomes_a_workbook(self):
        options = ("--unpaced", "--quick", "--memory", "3", "--seed", "7")
        with harness.session(*options) as (rig, program):
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
            self.assertEqual(workbook.parent, rig.excel)
            self.assertEqual(workbook.suffix, ".xls")
            tests = (rig.data / (workbook.stem + ".txt")).read_text("cp1252").count("REC NUMBER:")
            sheets = expected_report.read_report(workbook)
            self.assertEqual(
                [sheet for sheet in sheets if sheet.startswith("Test ")],
                [f"Test {number}-Graph" for number in range(1, tests + 1)],
            )
            program.do("answer Ok", "waitEnabled cmdSave", "click cmdExit", "waitGone frmTestList")


if __name__ == "__main__":
    sys.exit(unittest.main())
