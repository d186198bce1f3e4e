# SPDX-License-Identifier: GPL-3.0-or-later
"""How much of each folder of src/ the tests of a build folder have run.

usage: coverage.py [--raise] [BUILD]: of build/asan-ubsan, whose preset counts lines

Prints the share of lines that ran, folder by folder. A share below that of
tools/coverage-floors.txt fails; --raise writes the shares that are higher there. The counts are of
all runs since "coverage.py --forget [BUILD]".
"""

import argparse
import collections
import json
import pathlib
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parents[1]
FLOORS = ROOT / "tools" / "coverage-floors.txt"
ROOM = 0.5  # percent: random tests take other ways from run to run


def lines_that_ran(build):
    """For every source of src/: which lines can run, and how often they did. What no test has loaded has
    notes and no counts; its lines did not run."""
    lines = collections.defaultdict(lambda: collections.defaultdict(int))
    notes = sorted((build / "src").rglob("*.gcno"))
    if not notes:
        sys.exit(f"{build} counts no lines")
    told = subprocess.run(["gcov", "--json-format", "--stdout", *map(str, notes)], cwd=ROOT, check=False,
                          capture_output=True, text=True)
    if told.returncode != 0:
        sys.exit(f"{told.stderr}counts of another build: --forget them, and run the tests again")
    for report in told.stdout.splitlines():
        for file in json.loads(report)["files"]:
            # As it was named to the compiler, which leaves the repository's own path out.
            path = (ROOT / file["file"]).resolve()
            if path.is_relative_to(ROOT / "src"):
                for line in file["lines"]:
                    lines[path.relative_to(ROOT / "src")][line["line_number"]] += line["count"]
    return lines


def shares_of(lines):
    """The share in percent of each folder's lines that ran."""
    counts = collections.defaultdict(list)
    for path, counted in lines.items():
        counts[path.parts[0]] += counted.values()
    return {folder: 100 * sum(count > 0 for count in of_folder) / len(of_folder)
            for folder, of_folder in counts.items()}


def read_floors():
    rows = (line.split() for line in FLOORS.read_text().splitlines() if not line.startswith("#"))
    return {folder: float(share) for folder, share in rows}


def write_floors(floors):
    head = "# The share of a folder's lines in percent that the tests run at least; it only rises.\n"
    rows = (f"{folder} {share:.1f}\n" for folder, share in sorted(floors.items()))
    FLOORS.write_text(head + "".join(rows))


def check(shares, floors):
    """Prints the shares; the folders that are below their floor, or have none."""
    low = []
    for folder, share in sorted(shares.items()):
        floor = floors.get(folder)
        if floor is None or share < floor:
            low.append(folder)
        floor_text = "has no floor" if floor is None else f"floor {floor:.1f} %"
        print(f"{folder:12} {share:5.1f} %, {floor_text}{'  TOO LOW' if folder in low else ''}")
    for folder in sorted(set(floors) - set(shares)):
        print(f"{folder:12} has a floor and no lines")
        low.append(folder)
    return low


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n")[0])
    parser.add_argument("--raise", dest="raise_floors", action="store_true")
    parser.add_argument("--forget", action="store_true")
    parser.add_argument("build", nargs="?", type=pathlib.Path, default=ROOT / "build" / "asan-ubsan")
    options = parser.parse_args()
    build = options.build.resolve()
    if options.forget:
        for counts in build.rglob("*.gcda"):
            counts.unlink()
        return 0
    shares = shares_of(lines_that_ran(build))
    floors = read_floors()
    low = check(shares, floors)
    if options.raise_floors:
        raised = {folder: int((share - ROOM) * 10) / 10 for folder, share in shares.items()}
        write_floors({folder: max(raised.get(folder, 0.0), floors.get(folder, 0.0))
                      for folder in raised.keys() | floors.keys()})
    return 1 if low else 0


if __name__ == "__main__":
    sys.exit(main())
