# SPDX-License-Identifier: GPL-3.0-or-later
"""How much of each folder of src/ the tests of that folder run.

usage: coverage.py [--raise] [FOLDER ...]: without folders, of all of them

Builds the tests of the folders in build/coverage, runs them, and prints the share of lines that
ran, folder by folder. A share below that of tools/coverage-floors.txt fails; --raise writes the
shares that are higher there. A line that the tests of another folder run does not count: what is
tested only from above is found so.
"""

import argparse
import collections
import json
import pathlib
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parents[1]
BUILD = ROOT / "build" / "coverage"
FLOORS = ROOT / "tools" / "coverage-floors.txt"
ROOM = 0.5  # percent: random tests take other ways from run to run


def run(*command, **options):
    return subprocess.run(command, cwd=ROOT, check=True, text=True, **options)


def folders_of_sources():
    return sorted(path.name for path in (ROOT / "src").iterdir() if path.is_dir())


def tests_of(folder):
    """The folder's tests, each a target of its name; what runs one once more, at another scale, is
    no target."""
    listed = run("cmake", "--build", str(BUILD), "--target", "help", stdout=subprocess.PIPE)
    targets = {line.split(":")[0] for line in listed.stdout.splitlines()}
    return sorted(name for name in targets
                  if name.startswith(folder + "_") and name.endswith("_test") and "/" not in name)


def lines_that_ran(counters):
    """For every source of src/: which lines can run, and which did."""
    lines = collections.defaultdict(lambda: collections.defaultdict(int))
    for counter in counters:
        told = run("gcov", "--json-format", "--stdout", str(counter), stdout=subprocess.PIPE,
                   stderr=subprocess.DEVNULL)
        for report in told.stdout.splitlines():
            for file in json.loads(report)["files"]:
                # As it was named to the compiler, which leaves the repository's own path out.
                base = ROOT if file["file"].startswith("src/") else BUILD
                path = (base / file["file"]).resolve()
                if path.is_relative_to(ROOT / "src"):
                    for line in file["lines"]:
                        lines[path.relative_to(ROOT)][line["line_number"]] += line["count"]
    return lines


def share_of(folder):
    """The share in percent of the folder's lines that its own tests run; None without a test."""
    tests = tests_of(folder)
    if not tests:
        return None
    for old in BUILD.rglob("*.gcda"):
        old.unlink()
    run("cmake", "--build", str(BUILD), "--target", *tests, "--", "-j2", stdout=subprocess.DEVNULL)
    run("ctest", "--test-dir", str(BUILD), "-R", f"^({'|'.join(tests)})$", "--output-on-failure",
        stdout=subprocess.DEVNULL)
    ran = lines_that_ran(sorted(BUILD.rglob("*.gcda")))
    counts = [count for path, lines in ran.items() if path.parts[1] == folder
              for count in lines.values()]
    return 100 * sum(count > 0 for count in counts) / len(counts)


def read_floors():
    if not FLOORS.exists():
        return {}
    rows = (line.split() for line in FLOORS.read_text().splitlines() if not line.startswith("#"))
    return {folder: float(share) for folder, share in rows}


def write_floors(floors):
    head = "# The share of lines in percent that a folder's own tests run at least; it only rises.\n"
    rows = (f"{folder} {share:.1f}\n" for folder, share in sorted(floors.items()))
    FLOORS.write_text(head + "".join(rows))


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n")[0])
    parser.add_argument("--raise", dest="raise_floors", action="store_true")
    parser.add_argument("folders", nargs="*", default=folders_of_sources())
    options = parser.parse_args()
    run("cmake", "--preset", "coverage", stdout=subprocess.DEVNULL)
    floors = read_floors()
    below = []
    for folder in options.folders:
        share = share_of(folder)
        if share is None:
            print(f"{folder:12} has no tests of its own")
            continue
        floor = floors.get(folder, 0.0)
        too_low = share < floor
        print(f"{folder:12} {share:5.1f} %, floor {floor:.1f} %{'  TOO LOW' if too_low else ''}", flush=True)
        below += [folder] if too_low else []
        floors[folder] = max(floor, int((share - ROOM) * 10) / 10)
    if options.raise_floors:
        write_floors(floors)
    return 1 if below else 0


if __name__ == "__main__":
    sys.exit(main())
