# SPDX-License-Identifier: GPL-3.0-or-later
"""tools/coverage.py counts the lines that ran, and fails below a floor."""

import contextlib
import importlib.util
import io
import pathlib
import subprocess
import sys
import tempfile
import unittest

TOOL = pathlib.Path(__file__).resolve().parents[2] / "tools" / "coverage.py"
HALF = "int Half(int value) {\n  if (value > 5)\n    return 1;\n  return 2;\n}\n"
MAIN = "int Half(int value);\nint main(int count, char**) { return Half(count) == 2 ? 0 : 1; }\n"


class Coverage(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.root = pathlib.Path(folder.name).resolve()
        self.build = self.root / "build"
        for name, text in (("one/half.cpp", HALF), ("two/unused.cpp", "int Unused() { return 3; }\n"),
                           ("main.cpp", MAIN)):
            source = self.root / "src" / name
            source.parent.mkdir(parents=True, exist_ok=True)
            source.write_text(text)
        objects = []
        for name in ("one/half", "two/unused"):
            objects.append(self.build / "src" / f"{name}.o")
            objects[-1].parent.mkdir(parents=True)
            self.compile("--coverage", "-c", f"{self.root}/src/{name}.cpp", "-o", objects[-1])
        self.compile("--coverage", f"{self.root}/src/main.cpp", objects[0], "-o", self.build / "program")
        spec = importlib.util.spec_from_file_location("coverage_tool", TOOL)
        self.tool = importlib.util.module_from_spec(spec)
        spec.loader.exec_module(self.tool)
        self.tool.ROOT = self.root
        self.tool.FLOORS = self.root / "floors.txt"

    def compile(self, *arguments):
        subprocess.run(["c++", f"-ffile-prefix-map={self.root}=.", *map(str, arguments)], check=True,
                       cwd=self.build)

    def run_tool(self, floors, *options):
        self.tool.FLOORS.write_text(floors)
        said = io.StringIO()
        sys.argv = ["coverage.py", *options, str(self.build)]
        with contextlib.redirect_stdout(said):
            ended = self.tool.main()
        return ended, said.getvalue().splitlines()

    def test_the_share_of_each_folder_is_held_against_its_floor(self):
        subprocess.run([self.build / "program"], check=True)
        ended, said = self.run_tool("# floors\none 75.0\ntwo 0.0\n")
        self.assertEqual((ended, said), (0, ["one           75.0 %, floor 75.0 %",
                                             "two            0.0 %, floor 0.0 %"]))
        ended, said = self.run_tool("one 75.1\ntwo 0.0\n")
        self.assertEqual((ended, said[0]), (1, "one           75.0 %, floor 75.1 %  TOO LOW"))
        ended, said = self.run_tool("one 75.0\n")
        self.assertEqual((ended, said[1]), (1, "two            0.0 %, has no floor  TOO LOW"))
        ended, said = self.run_tool("gone 50.0\none 75.0\ntwo 0.0\n")
        self.assertEqual((ended, said[2]), (1, "gone         has a floor and no lines"))

    def test_a_floor_only_rises(self):
        subprocess.run([self.build / "program"], check=True)
        self.run_tool("one 60.0\ntwo 5.0\n", "--raise")
        self.assertEqual(self.tool.FLOORS.read_text().splitlines()[1:], ["one 74.5", "two 5.0"])

    def test_counts_are_of_the_runs_since_they_were_forgotten(self):
        subprocess.run([self.build / "program", *"12345"], check=False)
        self.assertEqual(self.run_tool("one 75.0\ntwo 0.0\n")[0], 0)
        subprocess.run([self.build / "program"], check=True)
        self.assertEqual(self.run_tool("one 100.0\ntwo 0.0\n")[0], 0)
        self.run_tool("", "--forget")
        self.assertEqual(self.run_tool("one 0.0\ntwo 0.0\n")[1][0], "one            0.0 %, floor 0.0 %")

    def test_counts_of_an_earlier_build_are_refused(self):
        subprocess.run([self.build / "program"], check=True)
        (self.root / "src/one/half.cpp").write_text(HALF + "int More() { return 0; }\n")
        self.compile("--coverage", "-c", f"{self.root}/src/one/half.cpp", "-o", self.build / "src/one/half.o")
        with self.assertRaisesRegex(SystemExit, "counts of another build"):
            self.run_tool("one 0.0\ntwo 0.0\n")

    def test_a_build_that_counts_nothing_is_refused(self):
        self.build = self.root / "elsewhere"
        self.build.mkdir()
        with self.assertRaisesRegex(SystemExit, "counts no lines"):
            self.run_tool("")


if __name__ == "__main__":
    unittest.main()
