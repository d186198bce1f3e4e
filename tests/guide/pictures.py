# SPDX-License-Identifier: GPL-3.0-or-later
"""Makes the guide's pictures: the real program on the simulated instrument, window by window.

usage: pictures.py FOLDER; the environment is that of the end-to-end tests. What the guide shows and
what is made here must be the same names; docs/guide is read for them.
"""

import pathlib
import re
import shutil
import sys

HERE = pathlib.Path(__file__).parent
sys.path.insert(0, str(HERE.parent / "end_to_end"))
import harness  # noqa: E402

GUIDE = HERE.parents[1] / "docs" / "guide"
HEADER = (
    "Example Power Co.", "Substation North", "Feeder 12", "Example Transformers", "RCT 1200/5",
    "4711-0815", "Annual test", "A. Operator",
)


def wanted():
    """The names of the pictures that the guide's pages show."""
    return {
        name
        for page in GUIDE.glob("*.md")
        for name in re.findall(r"\]\(pictures/([^)]+)\)", page.read_text("utf-8"))
    }


def settings_and_headers(program):
    program.do("wait frmMain", "menu mnuConfig", "wait frmConfig", "grab configure", "key Escape",
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
    program.do("grab test-window")
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
    program.do(f'waitText lblMessage "{harness.RATIO}" 60000', "click cmdContinue",
               'waitText lblTest "TEST COMPLETE."')
    program.do("click cmdExit", f'answer Yes "{harness.SAVE}"', "wait cdFile", "grab save",
               'chooseFile "Feeder12.txt"')
    harness.finish_save(program)


def records(program, rig):
    """What is done with records: fetched, listed, edited, laid over each other, copied."""
    program.do("menu mnuDownload", "wait frmTestList", "waitText cmdSave Save", "click lvTest",
               "key End", "key Home", "key Shift+Down", "key Shift+Down",
               'waitText lblSelect "Select: 3 of 8"', "grab memory frmMain",
               "click cmdSave", 'waitContains lblMessage "were saved."',
               "waitEnabled cmdSave", "click cmdExit", "waitGone frmTestList")
    program.do("grab main frmMain")
    program.do("menu mnuRecall", "wait frmTestList", "click lvTest", "key End", "key Home",
               "sleep 1000", "grab recall frmMain", "grab record-panel RecordPanel",
               "click tabPanel", "key Right", "sleep 1000", "grab compare RecordPanel",
               "click cmdExit", "waitGone frmTestList")
    program.do("menu mnuSetDescr", "wait frmSetDescr", "click lvTest", "key End", "key Home",
               "key Return", "waitEnabled cmdSave", "click lstTest", "key Home", "sleep 1000",
               "grab record-headers frmMain", "click cmdExit", "waitGone frmSetDescr")
    program.do("menu mnuOverlay", "wait frmFileUtilOverlay", "click lvTest", "key End", "key Home",
               "click cmdOp0", "click lvTest", "key Down", "click cmdOp1", "sleep 1000",
               "grab overlay frmMain", "click cmdExit", "waitGone frmFileUtilOverlay")
    target = rig.folder / "usb-stick"
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
    records(program, rig)
    if harness.leave(program) != 0:
        raise AssertionError("the program did not end well")


def main(folder):
    with harness.Rig("--unpaced", "--seed", "5", "--memory", "8") as rig:
        make(rig)
        made = {path.name for path in rig.pictures.glob("*.png")}
        for name in sorted(wanted() - made):
            print("the guide shows a picture that is not made:", name)
        for name in sorted(made - wanted()):
            print("this picture is made and not shown in the guide:", name)
        shutil.rmtree(folder, ignore_errors=True)
        shutil.copytree(rig.pictures, folder)
    return 1 if made != wanted() else 0


if __name__ == "__main__":
    sys.exit(main(pathlib.Path(sys.argv[1])))
