# SPDX-License-Identifier: GPL-3.0-or-later
"""Whole sessions: what is in the record file is what went over the line."""

import datetime
import html
import os
import random
import sys
import unittest

import expected_record
import harness

NOTES = ["CT of bay 4; see drawing 17-B", "", "Repeat in spring (5 °C, wet)"]
HEADER = [
    "Blåvik Energi",
    "Station 14",
    "",
    "Trafo GmbH",
    "CT-1200/5",
    "0815-4711",
    "these are more than twenty letters",
    "M. Müller",
]


def fill_header(program, header, notes):
    program.do("click cmdHeader", "wait frmHeader")
    for i, text in enumerate(header):
        program.do(f'type txtHeader{i} "{text}"')
    program.do("click frmHeader/cmdSave", "click cmdNotes", "wait frmNotepad")
    text = "\\n".join(notes)
    program.do(f'type rt "{text}"', "close frmNotepad", "waitGone frmNotepad")
    program.do("click frmHeader/cmdExit", "waitGone frmHeader")


def stored(field):
    """A longer text is cut to 20 characters and not filled up again, even when it then ends in a
    blank that goes too."""
    text = field.strip()
    if len(text) > 20:
        return text[:20].strip()
    return text.ljust(20) if text else ""


class Session(unittest.TestCase):
    def check(self, rig, name, began, header, shots, nameplate, notes=None):
        """The record file is made of exactly these shots, dated within the run."""
        ended = datetime.datetime.now()
        actual = (rig.data / name).read_bytes()
        date, at = expected_record.begun(actual)
        started = datetime.datetime.strptime(f"{date} {at}", "%m/%d/%y %H:%M")
        self.assertTrue(began <= started <= ended, f"{began} <= {started} <= {ended}")
        expected = expected_record.record_file(name, date, at, header, shots, nameplate, notes)
        self.assertEqual(
            actual.decode("cp1252").split("\r\n"), expected.decode("cp1252").split("\r\n")
        )
        self.assertEqual(actual, expected)

    def play(self, nameplate, *instrument_options):
        """Four shots, the second dropped; the record file must be the expected one."""
        began = datetime.datetime.now().replace(second=0, microsecond=0)
        with harness.started(*instrument_options) as (rig, program):
            harness.open_test_window(program)
            fill_header(program, HEADER, NOTES)
            harness.type_nameplate(program, *nameplate)
            harness.full_shot(program, first=True)
            harness.full_shot(program)
            harness.repeat_shot(program)
            harness.full_shot(program)
            harness.ratio_shot(program)
            harness.save_session(program, "T17.txt")
            self.assertEqual(harness.leave(program), 0)
            shots = expected_record.shots_of(rig.byte_log)
            self.assertEqual([shot.ratio_only for shot in shots], [False, False, False, True])
            del shots[1]
            header = [stored(field) for field in HEADER]
            self.check(rig, "T17.txt", began, header, shots, nameplate, "\r\n".join(NOTES))


class QuickSessions(Session):
    def test_the_record_file_is_what_went_over_the_line(self):
        first = int(os.environ.get("DAVO_SEED", "1"))
        for seed in range(first, first + 4):
            draw = random.Random(seed)
            nameplate = (str(draw.choice([200, 400, 1000, 1200])), str(draw.choice([1, 3, 5])))
            with self.subTest(seed=seed, nameplate=nameplate):
                print(f"DAVO_SEED={seed}", flush=True)
                self.play(nameplate, "--unpaced", "--quick", "--seed", str(seed))

    def test_a_session_of_ratio_tests_only(self):
        began = datetime.datetime.now().replace(second=0, microsecond=0)
        with harness.started("--unpaced", "--quick", "--seed", "21") as (rig, program):
            harness.open_test_window(program, "mnuRatio")
            harness.ratio_shot(program, first=True, both=False)
            harness.ratio_shot(program, both=False)
            harness.save_session(program, "R2.txt")
            self.assertEqual(harness.leave(program), 0)
            shots = expected_record.shots_of(rig.byte_log)
            self.assertEqual([shot.ratio_only for shot in shots], [True, True])
            self.check(rig, "R2.txt", began, [" " * 20] * 8, shots, None)

    def test_a_name_is_proposed_and_what_is_typed_takes_its_place(self):
        with harness.started("--unpaced", "--quick", "--seed", "22") as (rig, program):
            harness.open_test_window(program, "mnuRatio")
            fill_header(program, HEADER, NOTES)
            harness.ratio_shot(program, first=True, both=False)
            program.do("click cmdExit", f'answer Yes "{harness.SAVE}"', "wait cdFile")
            self.assertRegex(program.text("fileNameEdit"), r"^0815-4711 \d\d-\d\d-\d\d$")
            program.do("key K", "key 1")
            self.assertEqual(program.text("fileNameEdit"), "k1")
            program.do("key Return")
            harness.finish_save(program)
            self.assertTrue((rig.data / "k1.txt").exists())

    def test_a_certificate_is_made_of_the_session_that_was_just_saved(self):
        with harness.started("--unpaced", "--quick", "--seed", "23") as (rig, program):
            harness.open_test_window(program)
            fill_header(program, HEADER, NOTES)
            harness.full_shot(program, first=True)
            harness.save_session(program, "T23.txt")
            self.assertIn("T23 is saved.", program.text("lblSaved"))
            program.do("click cmdCertificate", "wait cdFile")
            self.assertEqual(program.text("fileNameEdit"), "T23.pdf")
            program.do('chooseFile "T23.pdf"', 'waitContains lblSaved "T23.pdf"')
            self.assertTrue((rig.data / "T23.pdf").read_bytes().startswith(b"%PDF-"))
            program.do("click cmdCertificate", 'chooseFile "T23.html"')
            program.do('waitContains lblSaved "T23.html"')
            page = (rig.data / "T23.html").read_text("utf-8")
            self.assertIn("<title>T23 - Test Certificate</title>", page)
            shot, = expected_record.shots_of(rig.byte_log)
            for text in (shot.ratio.strip(), "0815-4711", NOTES[0]):
                self.assertIn(html.escape(text), page)
            self.assertEqual(harness.leave(program), 0)


class PacedSession(Session):
    def test_the_record_file_is_what_went_over_a_paced_line(self):
        self.play(("1200", "5"), "--seed", "11")


if __name__ == "__main__":
    sys.exit(unittest.main())
