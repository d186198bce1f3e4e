# SPDX-License-Identifier: GPL-3.0-or-later
"""Drives a small program through the driver, to know that the driver itself can be trusted."""

import os
import pathlib
import subprocess
import sys
import tempfile
import unittest

SAMPLE = os.environ["DAVO_DRIVER_SAMPLE"]
PLUGINS = os.environ["DAVO_PLUGINS"]


def drive(script, pictures, by_input=False):
    """The exit code and the driver's lines of a run of script."""
    file = pathlib.Path(pictures) / "script.txt"
    file.write_text(script)
    environment = dict(
        os.environ,
        QT_QPA_PLATFORM="offscreen",
        QT_PLUGIN_PATH=PLUGINS,
        QT_QPA_GENERIC_PLUGINS="davodriver",
        DAVO_DRIVER_SCRIPT="-" if by_input else str(file),
        DAVO_DRIVER_PICTURES=str(pictures),
    )
    result = subprocess.run(
        [SAMPLE],
        env=environment,
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

    def test_plays_commands_from_the_standard_input(self):
        code, output = drive(self.SESSION, self.pictures, by_input=True)
        self.assertEqual(code, 0, output)

    def test_the_end_of_the_standard_input_ends_the_program(self):
        code, output = drive("waitText lblMessage ready\n", self.pictures, by_input=True)
        self.assertEqual(code, 4, output)
        self.assertIn("driver: do waitText lblMessage ready", output)

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
