# SPDX-License-Identifier: GPL-3.0-or-later
"""The commands of tools/ say what they do, and refuse what they do not know, without doing anything."""

import pathlib
import shutil
import subprocess
import sys
import tempfile
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
PYTHON = [sys.executable, "-B"]
COMMANDS = {
    "golden-pictures": ["tools/golden-pictures"],
    "renew-pictures": ["tools/renew-pictures"],
    "coverage.py": [*PYTHON, "tools/coverage.py"],
    "make-template.py": [*PYTHON, "tools/make-template.py"],
    "monkey.py": [*PYTHON, "tests/monkey/monkey.py"],
    "soak.py": [*PYTHON, "tests/monkey/soak.py"],
}


class Commands(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.root = pathlib.Path(folder.name).resolve() / "repository"
        for name in ("tools", "tests/end_to_end", "tests/monkey"):
            shutil.copytree(ROOT / name, self.root / name, ignore=shutil.ignore_patterns("__pycache__"))
        self.before = self.files()

    def files(self):
        return {path: path.stat().st_mtime_ns for path in self.root.rglob("*")}

    def run_command(self, *words, folder="."):
        ended = subprocess.run(words, cwd=self.root / folder, capture_output=True, text=True, timeout=60, check=False)
        self.assertEqual(self.files(), self.before, f"{words} changed a file")
        return ended.returncode, ended.stdout + ended.stderr

    def refuses(self, said, *words):
        """Whatever the code is: it is no 0."""
        code, text = self.run_command(*words)
        self.assertIn(said, text)
        self.assertNotEqual(code, 0, words)

    def test_help_is_the_usage(self):
        for name, command in COMMANDS.items():
            for option in ("--help", "-h"):
                with self.subTest(name, option=option):
                    code, text = self.run_command(*command, option)
                    self.assertEqual(code, 0, text)
                    self.assertIn(f"usage: {name}", text)

    def test_an_unknown_option_is_refused(self):
        for name, command in COMMANDS.items():
            with self.subTest(name):
                code, text = self.run_command(*command, "--no-such-option")
                self.assertEqual(code, 2, text)
                self.assertTrue(text)

    def test_golden_pictures_takes_one_program(self):
        program = "/bin/true"
        self.refuses("no program nowhere", "tools/golden-pictures", "nowhere")
        self.refuses("no program tools", "tools/golden-pictures", "--renew", "tools")
        self.refuses("no program tools/plain_words.txt", "tools/golden-pictures", "tools/plain_words.txt")
        self.refuses("one program at most", "tools/golden-pictures", program, program)
        self.refuses("no option --compare", "tools/golden-pictures", program, "--compare")

    def test_the_usage_ends_with_the_comment(self):
        for name in ("golden-pictures", "renew-pictures"):
            _, text = self.run_command(f"tools/{name}", "--help")
            self.assertNotIn("pipefail", text)
            self.assertNotIn("SPDX", text)

    def test_pictures_are_renewed_of_a_build_folder(self):
        self.refuses("nowhere is no build folder", "tools/renew-pictures", "nowhere")
        self.refuses("one build folder", "tools/renew-pictures", "tools", "tools")

    def test_nothing_is_not_looked_at_without_a_word(self):
        self.refuses("no seed in 5..1", *PYTHON, "tests/monkey/monkey.py", "--seeds", "5..1")
        self.refuses("usage: tidy.py", *PYTHON, "tools/tidy.py", "--help")
        self.refuses("usage: tidy.py", *PYTHON, "tools/tidy.py", "tools", "nowhere")

    def test_mutants_are_of_a_folder_that_is_there(self):
        has = subprocess.run(["/usr/bin/python3", "-c", "import clang.cindex"], capture_output=True, check=False)
        if has.returncode != 0:
            self.skipTest("no libclang for Python")
        self.refuses("no folder src/nowhere", "tools/mutate.py", "nowhere")


if __name__ == "__main__":
    unittest.main()
