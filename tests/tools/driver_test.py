# SPDX-License-Identifier: GPL-3.0-or-later
"""Drives a small program through the driver, to know that the driver itself can be trusted."""

import json
import os
import pathlib
import subprocess
import sys
import tempfile
import unittest

SAMPLE = os.environ["DAVO_DRIVER_SAMPLE"]
PLUGINS = os.environ["DAVO_PLUGINS"]


def environment(script, pictures):
    return dict(
        os.environ,
        QT_QPA_PLATFORM="offscreen",
        QT_PLUGIN_PATH=PLUGINS,
        QT_QPA_GENERIC_PLUGINS="davodriver",
        DAVO_DRIVER_SCRIPT=script,
        DAVO_DRIVER_PICTURES=str(pictures),
    )


def drive(script, pictures, by_input=False):
    """The exit code and the driver's lines of a run of script."""
    file = pathlib.Path(pictures) / "script.txt"
    file.write_text(script)
    result = subprocess.run(
        [SAMPLE],
        env=environment("-" if by_input else str(file), pictures),
        input=script if by_input else "",
        capture_output=True,
        text=True,
        timeout=60,
        check=False,
    )
    return result.returncode, result.stdout


class DriverTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.pictures = pathlib.Path(folder.name)

    SESSION = """
# menus, prompts that follow each other, a button that is enabled late, keys, a save dialog
waitText lblMessage ready
menu mnuBoth
answer Yes "First? "
answer Yes "Second\\nline?"
waitText lblMessage "yes yes"
click cmdLater
waitText lblMessage pressed
type txtBox "new words"
focusOut
waitText lblMessage "typed new words"
menu mnuSave
chooseFile T1.txt
waitText lblMessage T1.txt
grab sample
colours dark
grab sample-dark
colours light
state
close frmSample
"""

    def test_plays_a_script_through_nested_dialogs(self):
        code, output = drive(self.SESSION, self.pictures)
        self.assertEqual(code, 0, output)
        self.assertIn("driver: do close frmSample", output)
        self.assertIn('"text":"T1.txt"', output)
        light = (self.pictures / "sample.png").read_bytes()
        self.assertTrue(light.startswith(b"\x89PNG"))
        self.assertNotEqual((self.pictures / "sample-dark.png").read_bytes(), light)

    def test_chooses_a_file_that_is_opened(self):
        file = self.pictures / "a file.csv"
        file.touch()
        script = f'menu mnuOpen\nchooseFile "{file}"\nwaitText lblMessage "a file.csv"\nclose frmSample\n'
        code, output = drive(script, self.pictures)
        self.assertEqual(code, 0, output)

    def test_plays_commands_from_the_standard_input(self):
        code, output = drive(self.SESSION, self.pictures, by_input=True)
        self.assertEqual(code, 0, output)

    def test_no_thread_reads_on_when_the_program_has_no_driver_any_more(self):
        # The input stays open, and commands that come while the program ends harm nobody.
        script = "waitText lblMessage ready\nclose frmSample\n" + "state\n" * 3000
        for _ in range(5):
            with subprocess.Popen(
                [SAMPLE],
                env=environment("-", self.pictures),
                stdin=subprocess.PIPE,
                stdout=subprocess.PIPE,
                text=True,
            ) as program:
                program.stdin.write(script)
                program.stdin.flush()
                output = program.stdout.read()
                self.assertEqual(program.wait(60), 0, output[-2000:])
                self.assertIn("threads left: 1\n", output)

    def test_the_end_of_the_standard_input_ends_the_program(self):
        code, output = drive("waitText lblMessage ready\n", self.pictures, by_input=True)
        self.assertEqual(code, 4, output)
        self.assertIn("driver: do waitText lblMessage ready", output)

    def look(self, script):
        """What the driver's last look of a run of script found, and all its lines."""
        code, output = drive(script + "\nlook\nclose frmSample", self.pictures)
        self.assertEqual(code, 0, output)
        looks = [line for line in output.splitlines() if line.startswith("driver: look ")]
        return json.loads(looks[-1].removeprefix("driver: look ")), output

    def test_a_look_has_what_can_be_done_now(self):
        seen, _ = self.look("waitText lblMessage ready")
        acts = [act["do"] for act in seen["acts"]]
        self.assertEqual(
            acts,
            ["type frmSample/txtBox", "menu mnuBoth", "menu mnuSave", "menu mnuOpen",
             "close frmSample"],
        )
        self.assertEqual(seen["dialogs"], [])
        self.assertTrue(seen["file"])
        seen, _ = self.look("waitEnabled cmdLater")
        self.assertIn({"do": "click frmSample/cmdLater", "text": "&Later"}, seen["acts"])

    def test_a_look_at_a_question_has_its_answers_only(self):
        _, output = self.look("menu mnuBoth\nwait msgBox\nlook\nanswer No")
        line = next(line for line in output.splitlines() if line.startswith("driver: look "))
        seen = json.loads(line.removeprefix("driver: look "))
        self.assertEqual(seen["dialogs"], [{"name": "msgBox", "text": "First? "}])
        acts = [act["do"] for act in seen["acts"]]
        self.assertEqual(acts, ["close msgBox", "answer Yes", "answer No"])

    def test_a_lenient_driver_leaves_out_what_cannot_be_done(self):
        _, output = self.look("lenient\nclick cmdLater 0\nclick cmdNone 0\nclose txtBox2 0")
        self.assertIn("driver: left out click cmdLater 0: cmdLater is disabled", output)
        self.assertIn("driver: left out click cmdNone 0: cmdNone is not visible", output)
        self.assertNotIn("FAILED", output)

    def test_a_watched_control_says_each_text_it_is_painted_with(self):
        script = "watch lblMessage\nwaitText lblMessage ready\nsleep 50\nclick cmdLater\nsleep 50"
        _, output = self.look(script)
        painted = [line for line in output.splitlines() if line.startswith("driver: painted")]
        self.assertEqual(painted, ["driver: painted lblMessage ready",
                                   "driver: painted lblMessage pressed"])

    def assert_fails(self, script, reason):
        code, output = drive(script, self.pictures)
        self.assertEqual(code, 3, output)
        self.assertIn("driver: FAILED", output)
        self.assertIn(reason, output)
        self.assertIn('driver: state {"windows"', output)

    def test_a_text_that_never_comes_fails(self):
        self.assert_fails('waitText lblMessage never 200', 'lblMessage shows "ready"')
        self.assertTrue((self.pictures / "failed.png").exists())

    def test_a_disabled_button_is_not_pressed(self):
        self.assert_fails("click cmdLater 50", "cmdLater is disabled")

    def test_a_prompt_with_another_text_is_not_answered(self):
        self.assert_fails('menu mnuBoth\nanswer Yes "Last?" 200', 'the prompt says "First? "')

    def test_a_window_behind_a_prompt_cannot_be_pressed(self):
        self.assert_fails(
            'menu mnuBoth\nsleep 400\nclick cmdLater 200', 'cmdLater is blocked by msgBox "First? "'
        )

    def test_an_unknown_command_fails(self):
        self.assert_fails("press cmdLater", "unknown command: press cmdLater")


if __name__ == "__main__":
    sys.exit(unittest.main())
