# SPDX-License-Identifier: GPL-3.0-or-later
"""Runs clang-tidy over our own sources.

usage: tidy.py FOLDER ...: over the sources below these folders of the repository.

build/tidy is configured for it: every source as it is, without precompiled headers and not joined
with others, so that one that does not include what it uses is found, too.

A file that passed is not looked at again until it, one of our headers that it includes, its compile
command, .clang-tidy or a package of this machine changes: a stamp named after all of these is in
build/tidy/passed.
"""

import concurrent.futures
import functools
import hashlib
import json
import os
import pathlib
import re
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parents[1]
BUILD = ROOT / "build" / "tidy"
STAMPS = BUILD / "passed"
INCLUDE = re.compile(rb'^\s*#\s*include\s*"([^"]+)"', re.M)


def configure(folders):
    with_tests = "ON" if {"tests", "bench"} & set(folders) else "OFF"
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
        if path.is_relative_to(ROOT) and path.relative_to(ROOT).parts[0] in folders:
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


def stamp(entry, common):
    digest = hashlib.sha256(common + entry["command"].encode())
    for path in with_own_headers(pathlib.Path(entry["file"])):
        digest.update(str(path.relative_to(ROOT)).encode() + path.read_bytes())
    return STAMPS / digest.hexdigest()


def common_key():
    key = subprocess.run(["clang-tidy", "--version"], capture_output=True, check=True).stdout
    try:
        key += subprocess.run(["dpkg-query", "-W"], capture_output=True, check=True).stdout
    except FileNotFoundError:
        pass  # no Debian
    for settings in sorted(ROOT.glob("*/.clang-tidy")) + [ROOT / ".clang-tidy"]:
        key += settings.read_bytes()
    return key


def check(source):
    return subprocess.run(
        ["clang-tidy", "--quiet", "-p", BUILD, source], capture_output=True, text=True, check=False
    )


def main():
    folders = sys.argv[1:]
    if not folders:
        sys.exit(__doc__)
    configure(folders)
    STAMPS.mkdir(parents=True, exist_ok=True)
    common = common_key()
    stamps = {entry["file"]: stamp(entry, common) for entry in own_sources(folders)}
    todo = sorted(source for source, path in stamps.items() if not path.exists())
    print(f"{len(stamps)} files, {len(todo)} to look at", flush=True)

    failed = []
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        results = {pool.submit(check, source): source for source in todo}
        for future in concurrent.futures.as_completed(results):
            source, result = results[future], future.result()
            if result.returncode == 0:
                stamps[source].touch()
            else:
                failed.append(source)
                print(result.stdout, result.stderr, flush=True)
    for source in sorted(failed):
        print("clang-tidy:", pathlib.Path(source).relative_to(ROOT))
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
