# SPDX-License-Identifier: GPL-3.0-or-later
"""Runs clang-tidy over our own sources.

usage: tidy.py FOLDER ...: over the sources below these folders of the repository.

Most of its time goes into the headers that a source includes, so that it looks at the sources of a
folder as one. Each is compiled by itself before, without precompiled headers, so that one that does
not include what it uses is found, too. Sources that cannot be joined are looked at one by one.

What passed is not looked at again until a source of it, one of our headers that it includes, the
compile command, .clang-tidy or a package of this machine changes: a stamp named after all of these
is in build/tidy/passed.
"""

import bisect
import collections
import concurrent.futures
import functools
import hashlib
import json
import os
import pathlib
import re
import shlex
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parents[1]
BUILD = ROOT / "build" / "tidy"
STAMPS = BUILD / "passed"
JOINED = BUILD / "joined"
INCLUDE = re.compile(rb'^\s*#\s*include\s*"([^"]+)"', re.M)


def configure(folders):
    first = {part for folder in folders for part in pathlib.PurePath(folder).parts[:1]}
    with_tests = "ON" if {"tests", "bench"} & first else "OFF"
    options = {
        "CMAKE_BUILD_TYPE": "RelWithDebInfo",
        "DAVO_PRECOMPILED_HEADERS": "OFF",
        "DAVO_UNITY": "OFF",
        "DAVO_TESTS": with_tests,
        "DAVO_BENCH": with_tests,
    }
    define = [f"-D{name}={value}" for name, value in options.items()]
    subprocess.run(
        ["cmake", "-S", ROOT, "-B", BUILD, "-G", "Ninja", *define],
        check=True, stdout=subprocess.DEVNULL,
    )
    # What sources include and the build makes.
    targets = subprocess.run(
        ["ninja", "-C", BUILD, "-t", "targets", "all"], check=True, capture_output=True, text=True
    ).stdout
    made = [name for name in ("davo_uno_headers", "davo_driver_autogen") if f"\n{name}:" in targets]
    if made:
        subprocess.run(["ninja", "-C", BUILD, *made], check=True, stdout=subprocess.DEVNULL)


def own_sources(folders):
    for entry in json.loads((BUILD / "compile_commands.json").read_text()):
        path = pathlib.Path(entry["file"])
        if any(path.is_relative_to(ROOT / folder) for folder in folders):
            yield entry


@functools.cache
def with_own_headers(path):
    """The file and all of ours that it includes, in whatever way."""
    found, todo = set(), [path]
    while todo:
        path = todo.pop()
        if path in found:
            continue
        found.add(path)
        for name in INCLUDE.findall(path.read_bytes()):
            for folder in (path.parent, ROOT / "src", ROOT):
                header = folder / os.fsdecode(name)
                if header.is_file():
                    todo.append(header.resolve())
    return sorted(found)


class Unit:
    """Sources of one folder with one compile command."""

    def __init__(self, folder, command, sources):
        self.folder, self.command, self.sources = folder, command, sources

    def stamp(self, common):
        digest = hashlib.sha256(common + self.command.encode())
        for source in sorted(self.sources):
            for path in with_own_headers(source):
                digest.update(str(path.relative_to(ROOT)).encode() + path.read_bytes())
        return STAMPS / digest.hexdigest()

    def flags(self):
        return shlex.split(self.command)[1:] + ["-iquote", str(self.folder)]

    def joined(self):
        name = "-".join((*self.folder.relative_to(ROOT).parts, self.sources[0].stem))
        return JOINED / f"{name}.cpp"

    def join(self):
        """One file with the text of all sources."""
        self.joined().write_text("".join(source.read_text() + "\n" for source in self.sources))
        return self.joined()

    def in_sources(self, output):
        """What is said of the joined file, said of the sources."""
        begins, line = [], 1
        for source in self.sources:
            begins.append(line)
            line += source.read_text().count("\n") + 1

        def name(match):
            line = int(match[1])
            which = bisect.bisect(begins, line) - 1
            return f"{self.sources[which]}:{line - begins[which] + 1}:"

        return re.sub(re.escape(str(self.joined())) + r":(\d+):", name, output)


def units(folders):
    sources = collections.defaultdict(list)
    for entry in own_sources(folders):
        path = pathlib.Path(entry["file"])
        command = re.sub(r" -o \S+ -c \S+$", "", entry["command"])
        command = re.sub(r"^.*?(?=\S*/c\+\+ )", "", command).replace(" -fpch-preprocess", "")
        sources[path.parent, command].append(path)
    return [Unit(folder, command, paths) for (folder, command), paths in sources.items()]


def common_key():
    key = subprocess.run(["clang-tidy", "--version"], capture_output=True, check=True).stdout
    try:
        key += subprocess.run(["dpkg-query", "-W"], capture_output=True, check=True).stdout
    except FileNotFoundError:
        pass  # no Debian
    for settings in sorted(ROOT.glob("*/.clang-tidy")) + [ROOT / ".clang-tidy"]:
        key += settings.read_bytes()
    return key


def run(*command):
    result = subprocess.run(command, cwd=BUILD, capture_output=True, text=True, check=False)
    return result.returncode, result.stdout + result.stderr


def settings_of(folder):
    while not (folder / ".clang-tidy").exists():
        folder = folder.parent
    return folder / ".clang-tidy"


# A path through a function is followed for this many states, a quarter of the analyzer's own limit:
# what it finds is found early, and the rest of its time goes into the few functions that reach it.
STATES = ["-Xclang", "-analyzer-config", "-Xclang", "max-nodes=50000"]


def look_at(unit, path):
    settings = f"--config-file={settings_of(unit.folder)}"
    return run("clang-tidy", "--quiet", settings, str(path), "--", *unit.flags(), *STATES)


def check(unit):
    """What is wrong with the unit's sources, or nothing."""
    said = []
    for source in unit.sources:
        ended, output = run("clang++", "-fsyntax-only", *unit.flags(), str(source))
        if ended:
            said.append(output)
    if said:
        return said
    ended, output = look_at(unit, unit.join())
    if not ended:
        return []
    if "[clang-diagnostic-error]" in output and len(unit.sources) > 1:
        looks = (look_at(unit, source) for source in unit.sources)
        return [output for ended, output in looks if ended]
    return [unit.in_sources(output)]


def main():
    folders = sys.argv[1:]
    if not folders or not all((ROOT / folder).is_dir() for folder in folders):
        sys.exit(__doc__)
    configure(folders)
    for folder in (STAMPS, JOINED):
        folder.mkdir(parents=True, exist_ok=True)
    common = common_key()
    found = units(folders)
    if not found:
        sys.exit(f"no source below {' '.join(folders)}")
    todo = [unit for unit in found if not unit.stamp(common).exists()]
    todo.sort(key=lambda unit: -len(unit.sources))
    count = sum(len(unit.sources) for unit in todo)
    print(f"{sum(len(unit.sources) for unit in found)} files, {count} to look at", flush=True)

    failed = False
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        results = {pool.submit(check, unit): unit for unit in todo}
        for future in concurrent.futures.as_completed(results):
            said = future.result()
            if not said:
                results[future].stamp(common).touch()
                continue
            failed = True
            print("\n".join(said), flush=True)
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
