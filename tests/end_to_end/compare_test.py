# SPDX-License-Identifier: GPL-3.0-or-later
"""A record is compared in the real program; its certificate must say what the tab Compare says."""

import re
import subprocess
import sys
import unittest

import harness
from record_headers_test import record

# amperes and volts of a core that bends near 0.1 A
CURVE = [(round(0.003 * 1.5**i, 4), 400 * 0.003 * 1.5**i / (0.003 * 1.5**i + 0.04)) for i in range(17)]


def curve_record(name, date, serial, factor):
    """A record file of one test, whose voltages are those of CURVE times a factor."""
    text = record(name, [], header={"SN": serial}).decode("cp1252")
    text = text.replace("DATE: 11/21/26", f"DATE: {date}").replace("# OF SHOTS: 00", "# OF SHOTS: 01")
    text += "REC NUMBER: 1\r\n"
    for current, voltage in CURVE:
        text += f"CURRENT: {current:.4f}VOLTAGE: {voltage * factor:.1f}\r\n"
    text += f"NUMBER OF DATA POINTS: {len(CURVE)}\r\n"
    text += "KNEE VOLTAGE: 300 VOLTS\r\nKNEE CURRENT: 0.1 AMPS\r\n"
    text += "EXCITATION CUR: 2 AMPS\r\nEXCITATION VTG: 390 VOLTS\r\n"
    text += "MEASURED RATIO: 241.2\r\nPOLARITY: OUT OF PHASE\r\nPHASE ANGLE: 0.5 DEG\r\n"
    text += "NAMEPLATE RATIO: 240 (1200:5)\r\nPERCENT ERROR: 0.50%\r\n"
    text += "KNEE POINT TYPE: ASA 10%VTG -> 50%CUR\r\n"
    return text.encode("cp1252")


def makers_curve():
    """The table of a maker who writes a decimal comma and milliamperes; 25 % above CURVE."""
    lines = ["I (mA);U (V)"]
    lines += [f"{current * 1000:.1f};{voltage * 1.25:.2f}".replace(".", ",") for current, voltage in CURVE]
    return "\n".join(lines).encode("cp1252")


def said_by(tab):
    """The sentences of the tab, one after the other, as the certificate has them."""
    lines = [line.strip() for line in tab.split("\n") if line.strip()]
    table = lines.index("Worst")
    after = next(i for i, line in enumerate(lines) if line.startswith("The kneepoint is"))
    years = next(i for i, line in enumerate(lines) if line.startswith("Smooth kneepoints of this"))
    sentences = lines[:table] + lines[after:years]
    return [line if line.endswith(".") else line + ":" for line in sentences]


def certified(path):
    """What the section "Comparison" of a certificate says, as one line."""
    text = subprocess.run(
        ["pdftotext", "-layout", path, "-"], check=True, capture_output=True
    ).stdout.decode("utf-8")
    # Pages end with the record's name and their number; below the section the tester signs.
    text = re.sub(r"(?m)^.* Page \d+ of \d+$|\f", "", text)
    found = re.search(r"(?ms)^Comparison$(.*)^Operator +11/21/26$\s*^Tested by ", text)
    if not found:
        raise AssertionError("no section in: " + text)
    return " ".join(found[1].split())


class Compare(unittest.TestCase):
    def setUp(self):
        self.rig = harness.Rig()
        self.addCleanup(self.rig.close)
        for name, date, serial, factor in (
            ("NOW", "11/21/26", "4711", 1),
            ("FIRST", "06/14/15", "4711", 1 / 0.95),
            ("OTHER", "03/02/20", "815", 0.9),
        ):
            (self.rig.data / f"{name}.txt").write_bytes(curve_record(name, date, serial, factor))
        self.program = self.rig.start_main()

    def says(self, *sentences):
        """Waits until the tab says them."""
        self.program.do(*(f'waitContains txtCompared "{sentence}"' for sentence in sentences))

    def open_compare(self):
        self.program.do("menu mnuRecall", "wait frmTestList", "type txtFilter NOW")
        self.program.do("key Return", "key End", 'waitText lblSelect "Select: 1 of 1"')
        self.program.do('waitContains lblRecord "NOW   11/21/26"', "click tabPanel", "key Right")
        self.program.do("wait CompareFacts", 'waitContains cboReference "FIRST   06/14/15"')

    def test_the_certificate_says_what_the_tab_says(self):
        program = self.program
        self.open_compare()
        self.says("the voltage is 5.0 % below the reference.")
        program.do("type txtLimit 3", "type txtRatioLimit 1")
        self.says(
            "the voltage is 5.0 % below the reference, beyond the limit of 3 %.",
            "The turns ratio is 0.50 % above the nameplate's; the limit is 1 %.",
            "The polarity is out of phase (-).",
        )
        program.do("key Alt+I", "key O", 'waitContains cboReference "OTHER"')
        self.says("11.1 % above the reference, beyond the limit of 3 %.")
        table = self.rig.folder / "maker 600.csv"
        table.write_bytes(makers_curve())
        program.do("click cmdAddCurve", f'chooseFile "{table}"')
        program.do('waitText cboReference "maker 600   maker\'s curve"')
        self.says("20.0 % below the reference, beyond the limit of 3 %.")
        program.do("click cmdNameplate", "wait frmNameplate", "type txtEk 150", "type txtIe 0,05")
        program.do("type txtTurnsRatio 240", 'type txtTaps "600:5, 6000:5"', "click cmdKeep")
        program.do("waitGone frmNameplate")
        self.says(
            "Nameplate, class PX",
            "not less than the nameplate's 150 V.",
            "The kneepoint of 600:5 by its turns: ",
            "This instrument cannot saturate 6000:5: ",
        )
        tab = program.text("txtCompared")
        pdf = self.rig.folder / "certificate.pdf"
        program.do("click cmdSavePdf", f'chooseFile "{pdf}"', 'waitContains lblSaved "certificate.pdf"')
        wanted = ["Test 1 against: maker 600", *said_by(tab)]
        self.assertGreaterEqual(len(wanted), 11, tab)
        self.assertEqual(certified(pdf), " ".join(" ".join(wanted).split()))
        # What was kept is there for the next start; the table itself is as it was.
        self.assertEqual(table.read_bytes(), makers_curve())
        self.assertEqual(
            {path.name for path in self.rig.data.iterdir()},
            {"NOW.txt", "FIRST.txt", "OTHER.txt", "DIRDNLD.DNL", "nameplates.tsv",
             "maker 600.reference.csv"},
        )
        program.do("click cmdExit", "waitGone frmTestList")
        self.assertEqual(harness.leave(program), 0)
        self.program = program = self.rig.start_main()
        self.open_compare()
        self.says("beyond the limit of 3 %.", "not less than the nameplate's 150 V.")
        program.do("key Alt+I", "key M", 'waitText cboReference "maker 600   maker\'s curve"')
        self.assertEqual(program.text("txtCompared"), tab)
        program.do("click cmdExit", "waitGone frmTestList")
        self.assertEqual(harness.leave(program), 0)


if __name__ == "__main__":
    sys.exit(unittest.main())
