# SPDX-License-Identifier: GPL-3.0-or-later
"""Makes the guide's pictures: the real program on the simulated instrument, window by window.

usage: pictures.py FOLDER; the environment is that of the end-to-end tests. What the guide shows and
what is made here must be the same names; docs/guide is read for them.
"""

import os
import pathlib
import re
import shutil
import sys

HERE = pathlib.Path(__file__).parent
sys.path.insert(0, str(HERE.parent / "end_to_end"))
import harness  # noqa: E402

GUIDE = HERE.parents[1] / "docs" / "guide"
HEADER = (
    "Example Power Co.", "Substation North", "Feeder 12", "Example Transformers", "RCT 1200/5 MR",
    "4711-0815", "Annual test", "A. Operator",
)
# Controls that a page numbers in its picture, in the order of its list.
MAIN = "lblDot cmdBoth lvNewest chtPreview statusLine"
TEST = "frmeMessage Frame3 Frame4 cmdStart Frame5"
RECALL = "frameDisplaySort txtFilter cmdSave cmdDir RecordPanel"
PANEL = "lblRecord chtCurves cmdZoomIn tblTests"
COMPARE = "cboReference txtLimit txtCompared"
CONFIGURE = "lstPorts cmdTest cboComPort Frame2 cmdSave"


class PlainRig(harness.Rig):
    """The program runs in its folder, so that what it shows of a path is short and of no computer."""

    def __init__(self, *instrument_options):
        super().__init__(*instrument_options)
        (self.folder / "DAVO").symlink_to(self.folder, target_is_directory=True)
        (self.folder / "ttyUSB0").symlink_to(self.port)
        (self.folder / "config" / "davo" / "davo.ini").write_text(
            "[DATAPATH]\nPATH\\PATHVAL=DAVO/Shots_Data/\n\n[DAVO]\nPORTDEVICES\\COM1=./ttyUSB0\n"
        )
        os.chdir(self.folder)


def wanted():
    """The names of the pictures that the guide's pages show."""
    return {
        name
        for page in GUIDE.glob("*.md")
        for name in re.findall(r"\]\(pictures/([^)]+)\)", page.read_text("utf-8"))
    }


def settings_and_headers(program):
    program.do("wait frmMain", "menu mnuConfig", "wait frmConfig", f"grab configure frmConfig {CONFIGURE}", "key Escape",
               "waitGone frmConfig")
    program.do("menu mnuAbout", "wait frmAbout", "grab about", "key Escape", "waitGone frmAbout")
    program.do("menu mnuSetHeaderFile", "wait frmHeaderOptn", "grab header-choice",
               "click cmdHeader1", "wait frmHeader", 'waitText txtHeader0 "CENTRAL POWER"',
               "waitEnabled frmHeader/cmdSave", "grab header-davo", "click frmHeader/cmdExit",
               "waitGone frmHeader")


def header_and_notes(program):
    program.do("click cmdHeader", "wait frmHeader")
    for index, text in enumerate(HEADER):
        program.do(f'type txtHeader{index} "{text}"')
    program.do("click frmHeader/cmdSave", "grab header", "click cmdNotes", "wait frmNotepad",
               'type rt "Terminal box dry.\\nNext test in two years."', "grab notes",
               "close frmNotepad", "click frmHeader/cmdExit", "waitGone frmHeader")


def session(program):
    """A saturation and ratio test, watched, and a ratio test; saved as a record."""
    harness.open_test_window(program)
    program.do(f"grab test-window frmMain {TEST}")
    header_and_notes(program)
    harness.type_nameplate(program)
    program.do("click cmdStart")
    program.do(f'waitText lblMessage "{harness.TO_ZERO}"', "grab test-zero")
    program.do(f'waitText lblMessage "{harness.RANGE}"', "grab test-range", "click cmdContinue")
    program.do(f'waitText lblMessage "{harness.SATURATE}"', "waitEnabled cmdContinue", "sleep 3500",
               "grab test-saturation", "click cmdContinue")
    program.do(f'waitText lblMessage "{harness.LOWER}"', "sleep 1000", "grab test-lower")
    program.do(f'waitText lblMessage "{harness.RATIO}" 60000', "sleep 2000", "grab test-ratio",
               "click cmdContinue", 'waitText lblTest "TEST COMPLETE."', "sleep 1000",
               "grab test-complete")
    program.do("click cmdStart", f'waitText msgBox "{harness.RATIO_ONLY}"', "grab question")
    program.do(f'answer Yes "{harness.RATIO_ONLY}"')
    harness.type_nameplate(program, 600, 5)
    program.do(f'waitText lblMessage "{harness.RATIO}" 60000', "click cmdContinue",
               'waitText lblTest "TEST COMPLETE."')
    program.do("click cmdExit", f'answer Yes "{harness.SAVE}"', "wait cdFile",
               'chooseFile "Feeder12.txt"')
    harness.finish_save(program)


def older_record(rig):
    """The same transformer some years before: its voltages were 1 % lower."""
    text = (rig.data / "Feeder12.txt").read_text("cp1252")  # its line ends are "\n" here
    text = text.replace("TEST NUMBER: Feeder12", "TEST NUMBER: Feeder12 2021")
    text = re.sub(r"(?m)^DATE: .*$", "DATE: 06/14/21", text)
    text = re.sub(r"(?m)(VOLTAGE: )(\d+\.\d)$", lambda m: f"{m[1]}{float(m[2]) * 0.99:.1f}", text)
    with open(rig.data / "Feeder12 2021.txt", "w", encoding="cp1252", newline="\r\n") as file:
        file.write(text)


def bad_session(program):
    """A ratio test with swapped leads, named as such."""
    harness.open_test_window(program, "mnuRatio")
    harness.type_nameplate(program, 2000, 5)
    program.do("click cmdStart", f'waitText lblMessage "{harness.RATIO}" 60000', "click cmdContinue",
               'waitText lblTest "TEST COMPLETE."', "sleep 1000", "grab test-check",
               "click cmdExit", f'answer Yes "{harness.SAVE}"', "wait cdFile",
               'chooseFile "Leads swapped.txt"')
    harness.finish_save(program)


def records(program, rig):
    """What is done with records: fetched, listed, edited, laid over each other, copied."""
    program.do("menu mnuDownload", "wait frmTestList", "waitText cmdSave Save", "click lvTest",
               "key End", "key Home", "key Shift+Down", "key Shift+Down",
               'waitText lblSelect "Select: 3 of 8"', "grab memory frmMain",
               "click cmdSave", 'waitContains lblMessage "were saved."',
               "waitEnabled cmdSave", "click cmdExit", "waitGone frmTestList")
    program.do("click lvNewest", "key End", "key Home", "sleep 1000",
               f"grab main frmMain {MAIN}")
    program.do("menu mnuRecall", "wait frmTestList", "click lvTest", "key End", "key Home",
               "sleep 1000", f"grab recall frmMain {RECALL}",
               f"grab record-panel RecordPanel {PANEL}",
               "click tabPanel", "key Right", "type txtLimit 5", "sleep 1000", f"grab compare RecordPanel {COMPARE}",
               "click cmdNameplate", "wait frmNameplate", "type txtRct 0.35", "type txtEk 300", "type txtIe 0.1",
               "type txtTurnsRatio 240", "type txtRatioWithin 0.25", 'type txtTaps "600:5, 300:5"',
               "grab nameplate frmNameplate", "click cmdCancel", "waitGone frmNameplate",
               "click cmdExit", "waitGone frmTestList")
    program.do("menu mnuSetDescr", "wait frmSetDescr", "click lvTest", "key End", "key Home",
               "key Return", "waitEnabled cmdSave", "click lstTest", "key Home", "sleep 1000",
               "grab record-headers frmMain", "click cmdExit", "waitGone frmSetDescr")
    program.do("menu mnuOverlay", "wait frmFileUtilOverlay", "click lvTest", "key End", "key Home",
               "click cmdOp0", "click lvTest", "key Home", "key Down", "key Down", "click cmdOp1",
               "sleep 1000",
               "grab overlay frmMain", "click cmdExit", "waitGone frmFileUtilOverlay")
    target = pathlib.Path("DAVO", "usb-stick")
    target.mkdir()
    program.do("menu mnuFileUtil", "wait frmFileUtilOverlay", "click lvTest", "key End", "key Home",
               "key Shift+Down", "sleep 1000", "grab file-utilities frmMain", "click cmdOp1",
               "wait frmCopyFile", "waitGone frmFileUtilOverlay", f'type txtPath "{target}"',
               "grab copy frmCopyFile", "click cmdOK", "answer Ok",
               "waitGone frmCopyFile")


def make(rig):
    program = rig.start_program()
    settings_and_headers(program)
    session(program)
    older_record(rig)
    bad_session(program)
    records(program, rig)
    if harness.leave(program) != 0:
        raise AssertionError("the program did not end well")


def main(folder):
    folder = folder.resolve()
    here = pathlib.Path.cwd()
    with PlainRig("--unpaced", "--seed", "5", "--memory", "8", "--scenario",
                  "full,ratio-only,out-of-phase") as rig:
        make(rig)
        made = {path.name for path in rig.pictures.glob("*.png")}
        for name in sorted(wanted() - made):
            print("the guide shows a picture that is not made:", name)
        for name in sorted(made - wanted()):
            print("this picture is made and not shown in the guide:", name)
        shutil.rmtree(folder, ignore_errors=True)
        shutil.copytree(rig.pictures, folder)
        os.chdir(here)
    return 1 if made != wanted() else 0


if __name__ == "__main__":
    sys.exit(main(pathlib.Path(sys.argv[1])))
