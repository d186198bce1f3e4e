# SPDX-License-Identifier: GPL-3.0-or-later
"""Runs clang-tidy over our own sources of a build folder's compile_commands.json.

usage: tidy.py BUILD [FOLDER ...]: over the sources below these folders of the repository.

A file that passed is not looked at again until it, one of our headers that it includes, its
compile command or .clang-tidy changes: a stamp named after all of these stands in
<repository>/build/tidy.
"""

import concurrent.futures
import hashlib
import json
import os
import pathlib
import shlex
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parents[1]
OWN = ("src", "instrument", "tests", "bench", "fuzz")
STAMPS = ROOT / "build" / "tidy"


def is_own(path):
    return path.is_relative_to(ROOT) and path.relative_to(ROOT).parts[0] in OWN


def own_sources(build, folders):
    for entry in json.loads((build / "compile_commands.json").read_text()):
        path = pathlib.Path(entry["file"])
        if is_own(path) and path.relative_to(ROOT).parts[0] in folders:
            yield entry


def dependencies(build):
    """The files that each object was made of, as the build recorded them."""
    listing = subprocess.run(
        ["ninja", "-C", build, "-t", "deps"], capture_output=True, text=True, check=True
    ).stdout
    found = {}
    target = None
    for line in listing.splitlines():
        if line.startswith("    "):
            found[target].append((build / line.strip()).resolve())
        elif line:
            target = line.split(":", 1)[0]
            found[target] = []
    return found


def stamp(entry, deps, common):
    digest = hashlib.sha256(common)
    command = shlex.split(entry["command"])
    digest.update(entry["command"].encode())
    own = {path for path in deps.get(command[command.index("-o") + 1], []) if is_own(path)}
    for path in sorted(own | {pathlib.Path(entry["file"])}):
        # A header may have gone since the last build.
        content = path.read_bytes() if path.exists() else b""
        digest.update(str(path.relative_to(ROOT)).encode() + content)
    return STAMPS / digest.hexdigest()


def check(build, source):
    return subprocess.run(
        ["clang-tidy", "--quiet", "-p", build, source], capture_output=True, text=True, check=False
    )


def main():
    build = pathlib.Path(sys.argv[1]).resolve()
    folders = sys.argv[2:] or OWN
    STAMPS.mkdir(parents=True, exist_ok=True)
    version = subprocess.run(["clang-tidy", "--version"], capture_output=True, check=True).stdout
    common = version + (ROOT / ".clang-tidy").read_bytes()
    deps = dependencies(build)
    stamps = {entry["file"]: stamp(entry, deps, common) for entry in own_sources(build, folders)}
    todo = sorted(source for source, path in stamps.items() if not path.exists())
    print(f"{len(stamps)} files, {len(todo)} to look at", flush=True)

    failed = []
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        results = {pool.submit(check, build, source): source for source in todo}
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
