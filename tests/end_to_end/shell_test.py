# SPDX-License-Identifier: GPL-3.0-or-later
"""The program around its windows: what it starts with, how it is left, what it takes."""

import pathlib
import re
import shutil
import signal
import sys
import time
import unittest

import expected_record
import harness

QUICK = ("--unpaced", "--quick", "--seed", "11")
SPLASH = 1.27  # seconds
RECORDS = 250
MOST_MEMORY = 120  # MB
MOST_IDLE = 0.5  # of one core: what spins takes all of it
IDLE_SECONDS = 5


def write_record(path, number):
    date = f"{1 + number % 12:02}/{1 + number % 28:02}/{20 + number % 7:02}"
    lines = [f"TEST NUMBER: T{number}", f"DATE: {date}", "TIME: 10:15", "# OF SHOTS: 03"]
    keys = ("COMPANY", "STATION", "CIRCUIT", "MFR", "MODEL", "SN", "COMMENTS", "OPERATOR")
    lines += [f"{key}: SUBSTATION NORTH 12 " for key in keys]
    for shot in range(1, 4):
        lines.append(f"REC NUMBER: {shot}")
        lines += ["CURRENT: 0.0124VOLTAGE: 152.3"] * 32
        lines += ["NUMBER OF DATA POINTS: 32", "KNEE VOLTAGE: 152.3 VOLTS"]
    path.write_bytes(("\r\n".join(lines) + "\r\n").encode("latin-1"))


def memory(program):
    """What is resident, in MB."""
    status = pathlib.Path(f"/proc/{program.process.pid}/status").read_text()
    return int(re.search(r"VmRSS:\s*(\d+) kB", status)[1]) / 1024


def settings_of(rig):
    return (rig.folder / "config" / "davo" / "davo.ini").read_text().splitlines()


class Connection(unittest.TestCase):
    def test_the_instrument_is_asked_and_another_port_is_not_kept(self):
        with harness.started(*QUICK) as (rig, program):
            program.do("menu mnuConfig", "wait frmConfig", "click cmdTest")
            program.do('waitContains lblAnswer "DAVO-E R3.15 answers."', "click frmConfig/cmdExit")
            program.do("waitGone frmConfig", 'waitText statusLine/lblPort "COM1 ready"')


class Menu(unittest.TestCase):
    def test_records_decide_about_the_items_that_need_them(self):
        with harness.session(*QUICK) as (rig, program):
            self.assertFalse((rig.data / "DIRDNLD.DNL").exists())
            with self.assertRaisesRegex(harness.DriverFailed, "mnuFileUtil is disabled"):
                program.do("menu mnuFileUtil 500")
            program.end()
            write_record(rig.data / "T1.txt", 1)
            program = rig.start_main()
            for item, window in (
                ("mnuFileUtil", "frmFileUtilOverlay"),
                ("mnuOverlay", "frmFileUtilOverlay"),
                ("mnuSetDescr", "frmSetDescr"),
            ):
                program.do(f"menu {item}", f"wait {window}")
                program.do(f"click {window}/cmdExit", f"waitGone {window}")
            self.assertTrue((rig.data / "DIRDNLD.DNL").read_bytes().startswith(b"REC==001\r\nT1!"))

    def test_exit_asks(self):
        with harness.started(*QUICK) as (rig, program):
            program.do("menu mnuExit", f'answer No "{harness.LEAVE}"')
            self.assertIsNone(program.process.poll())
            self.assertEqual(harness.leave(program), 0)
            self.assertEqual(expected_record.read_byte_log(rig.byte_log)[-1], (False, b"X"))

    def test_a_marker_is_kept_for_the_next_run(self):
        with harness.session(*QUICK) as (rig, program):
            program.do("menu mnuKneepoint45")
            self.assertEqual(program.text("lblKneepoint"), "IEEE 45 Degree Marker")
            program.do("close frmMain")
            self.assertEqual(program.wait_end(), 0)
            self.assertIn("KPTYPE\\KPTYPEVAL=IEEE 45 Degree Marker", settings_of(rig))
            program = rig.start_main()
            self.assertEqual(program.text("lblKneepoint"), "IEEE 45 Degree Marker")

    def test_about_shows_the_model(self):
        with harness.session(*QUICK) as (rig, program):
            program.do("menu mnuAbout", "wait frmAbout")
            self.assertRegex(program.text("lblDavoVer"), "^DAVO-E ")
            program.do("click Command1", "waitGone frmAbout")


class FirstRun(unittest.TestCase):
    def test_makes_its_folders_beside_the_program(self):
        with harness.Rig(*QUICK) as rig:
            shutil.rmtree(rig.folder / "config")
            there = rig.folder / "program"
            there.mkdir()
            shutil.copy(harness.PROGRAM, there / "davo")
            before = harness.PROGRAM
            harness.PROGRAM = str(there / "davo")
            try:
                program = rig.start_program()
            finally:
                harness.PROGRAM = before
            program.do("wait frmMain")
            self.assertTrue((there / "Shots_Data").is_dir())
            self.assertTrue((there / "Shots_Excel").is_dir())
            self.assertEqual(program.text("lblKneepoint"), "ASA 10/50 Marker")
            self.assertEqual(harness.leave(program), 0)
            self.assertIn(f"PATH\\PATHVAL={there}/Shots_Data/", settings_of(rig))

    def test_a_damaged_setting_is_said_and_the_program_starts(self):
        with harness.Rig(*QUICK) as rig:
            file = rig.folder / "config" / "davo" / "davo.ini"
            file.write_text(file.read_text() + "COMPORT\\COMPORTVAL=abc\n")
            program = rig.start_main()
            program.do('waitText cmdNotice "Setting not usable"')
            self.assertIsNone(program.prompt())
            harness.open_test_window(program)  # COM1 is the instrument's
            harness.close_test_window(program)
            self.assertEqual(harness.leave(program), 0)


class Locale(unittest.TestCase):
    def session(self, environment):
        """The record file of a session with a shot, and the directory file."""
        with harness.Rig(*QUICK) as rig:
            program = rig.start_program(environment)
            program.do("wait frmMain")
            harness.open_test_window(program)
            harness.full_shot(program, first=True)
            harness.save_session(program, str(rig.data / "T1"))
            self.assertEqual(harness.leave(program), 0)
            record = (rig.data / "T1.txt").read_bytes()
            date = re.search(rb"DATE: (\d\d/\d\d/\d\d)\r\nTIME: (\d\d:\d\d)\r\n", record)
            self.assertTrue(date, "the date is written month first")
            directory = (rig.data / "DIRDNLD.DNL").read_bytes()
            port = [line for line in settings_of(rig) if line.startswith("COMPORT")]
            return record.replace(date[0], b""), directory[:12], port

    def test_does_not_change_what_is_written(self):
        german = {"LC_ALL": "de_DE.UTF-8", "LANG": "de_DE.UTF-8", "LANGUAGE": "de"}
        self.assertEqual(self.session(german), self.session({"LC_ALL": "C"}))


class EndRequests(unittest.TestCase):
    def end(self, rig, program):
        """The platform asks the program to end: it leaves in order, and soon."""
        program.process.send_signal(signal.SIGTERM)
        self.assertEqual(program.wait_end(10), 0)
        self.assertIn('COMPORT\\COMPORTVAL=" 1"', settings_of(rig))
        self.assertFalse((rig.folder / "config" / "davo" / "davo.lock").exists())

    def test_at_the_main_window(self):
        with harness.started(*QUICK) as (rig, program):
            self.end(rig, program)

    def test_while_a_question_is_asked(self):
        with harness.started(*QUICK) as (rig, program):
            program.do("menu mnuExit", "wait msgBox")
            self.end(rig, program)

    def test_while_the_configuration_is_open(self):
        with harness.started(*QUICK) as (rig, program):
            program.do("menu mnuConfig", "wait frmConfig")
            self.end(rig, program)

    def open_test_list(self, rig):
        write_record(rig.data / "T1.txt", 1)
        program = rig.start_main()
        program.do("menu mnuRecall", "wait frmTestList")
        return program

    def test_while_another_window_is_open(self):
        with harness.Rig(*QUICK) as rig:
            self.end(rig, self.open_test_list(rig))

    def test_the_main_window_is_closed_while_another_one_is_open(self):
        with harness.Rig(*QUICK) as rig:
            program = self.open_test_list(rig)
            program.do("close frmMain")
            self.assertEqual(program.wait_end(10), 0)
            self.assertIn('COMPORT\\COMPORTVAL=" 1"', settings_of(rig))

    def test_while_the_instrument_is_waited_for(self):
        with harness.started(*QUICK, "--fault", "silent") as (rig, program):
            program.do("menu mnuBoth")
            self.end(rig, program)

    def test_before_the_main_window_is_loaded(self):
        with harness.Rig(*QUICK) as rig:
            program = rig.start_program()
            program.do("wait frmSplash")
            program.process.send_signal(signal.SIGTERM)
            self.assertEqual(program.wait_end(10), 0)
            self.assertFalse([line for line in settings_of(rig) if "KPTYPE" in line])

    def test_during_a_session_keeps_its_shots(self):
        with harness.started(*QUICK) as (rig, program):
            harness.open_test_window(program)
            harness.full_shot(program, first=True)
            self.end(rig, program)
            program = rig.start_main()
            program.do("wait lblWhen0")
            self.assertIn(", 1 shot", program.control("lblWhen0")["text"])

    def test_during_a_shot(self):
        with harness.started(*QUICK) as (rig, program):
            harness.open_test_window(program)
            program.do("click cmdStart", f'waitText lblMessage "{harness.RANGE}"')
            self.end(rig, program)


class Figures(unittest.TestCase):
    def start(self, rig):
        began = time.monotonic()
        program = rig.start_main()
        program.do("waitGone frmSplash")
        return program, time.monotonic() - began - SPLASH

    def test_start_with_a_full_data_folder(self):
        with harness.Rig(*QUICK) as rig:
            empty, empty_wall = self.start(rig)
            empty_cpu = harness.processor_seconds(empty)
            self.assertEqual(harness.leave(empty), 0)
            for number in range(RECORDS):
                write_record(rig.data / f"T{number}.txt", number)
            program, wall = self.start(rig)
            cpu = harness.processor_seconds(program)
            began = time.monotonic()
            for number in range(RECORDS):
                (rig.data / f"T{number}.txt").read_bytes()
            reading = time.monotonic() - began
            resident = memory(program)
            idle = harness.idle_share(program, IDLE_SECONDS)
            print(
                f"\nstart without the splash's time: {wall * 1000:.0f} ms with {RECORDS} records, "
                f"{empty_wall * 1000:.0f} ms with none; processor time {cpu * 1000:.0f} ms and "
                f"{empty_cpu * 1000:.0f} ms; reading the records once: {reading * 1000:.1f} ms, "
                f"the start is {wall / reading:.1f} times that\n"
                f"resident: {resident:.1f} MB; at rest: {idle:.2%} of one core",
                flush=True,
            )
            self.assertEqual(program.control("cmdNotice"), None)
            self.assertLess(resident, MOST_MEMORY)
            self.assertLess(idle, MOST_IDLE)
            self.assertEqual(harness.leave(program), 0)


if __name__ == "__main__":
    sys.exit(unittest.main())
