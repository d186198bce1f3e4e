#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Changes one operator, constant or comparison of the sources at a time and runs the tests.

What no test notices is a survivor: a test is missing, or the change changes nothing. Each survivor
whose reason is known is in tools/mutants/kept/<folder>.txt, the reason below it; the others are
shown and fail.

All changes of a folder are compiled at once, in a copy of the repository below build/mutants; an
environment variable chooses one. Each test case is first run by itself to learn which changes it
comes by and how long it takes. A change is then tried with the cases that come by it, the quick ones
first, until one fails; what takes far more processor time than it should has failed, too. Cases that
take longer than --slow are left out.

It takes minutes to an hour a folder, and runs by hand: no other check waits for it.
"""

import argparse
import collections
import json
import os
import pathlib
import re
import resource
import shlex
import shutil
import signal
import subprocess
import sys
import tempfile
import time

sys.dont_write_bytecode = True
from mutants import find  # noqa: E402

ROOT = pathlib.Path(__file__).resolve().parents[1]
TREE = ROOT / "build" / "mutants" / "tree"
BUILD = TREE / "build" / "release"
KEPT = ROOT / "tools" / "mutants" / "kept"

# folder: its sources without the ending, all when none is named; its tests.
FOLDERS = {
    "common": (["numbers", "text"], ["common_test"]),
    "records": ([], ["records_test", "records_directory_test", "records_random_test",
                     "records_kill_test"]),
    "retrieval": (["header_slots", "list_order", "memory_directory", "record_reply", "header_upload",
                   "record_download"],
                  ["retrieval_header_slots_test", "retrieval_list_order_test",
                   "retrieval_memory_directory_test", "retrieval_header_upload_test",
                   "retrieval_record_download_test", "retrieval_download_faults_test"]),
    "testing": (["session_text", "shot_results", "shot_sequence", "shot_steps"],
                ["testing_session_text_test", "testing_sequence_test", "testing_session_save_test",
                 "testing_random_chunks_test"]),
    "analysis": ([], ["analysis_test", "analysis_random_test", "analysis_comparison_random_test"]),
}
QUICK = 0.3  # seconds: cases up to this run together


def run(*command, **options):
    return subprocess.run(command, check=True, text=True, **options)


class Book:
    """The changes by their numbers, from 1 up."""

    def __init__(self):
        self.changes = []
        self.shared = {}

    @staticmethod
    def shown_path(path):
        return str(pathlib.Path(path).resolve().relative_to(ROOT))

    def __call__(self, path, line, name, shared=False):
        if shared and (path, name) in self.shared:
            return self.shared[path, name]
        number = len(self.changes) + 1
        self.changes.append(find.Change(number, path, line, name))
        if shared:
            self.shared[path, name] = number
        return number


def put(path, content):
    """Writes only what differs, so that nothing else is compiled again."""
    if not path.exists() or path.read_bytes() != content:
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_bytes(content)


def copy_repository():
    listed = run("git", "-C", str(ROOT), "ls-files", "-co", "--exclude-standard", stdout=subprocess.PIPE).stdout
    names = {name for name in listed.splitlines() if (ROOT / name).is_file()}
    return {name: ROOT / name for name in names}


def arguments_of(folder):
    """How the compiler is called for the folder's sources."""
    commands = json.loads((BUILD / "compile_commands.json").read_text())
    options = {}
    for entry in commands:
        if f" -o src/{folder}/" in entry["command"]:
            words = shlex.split(entry["command"])
            for word, following in zip(words, words[1:]):
                if word == "-isystem":
                    options[word + following] = [word, following]
                elif word.startswith(("-I", "-D")):
                    options[word] = [word.replace(str(TREE), str(ROOT))]
    return ["-std=c++20", "-xc++", *(word for words in options.values() for word in words)]


def sources_of(folder, stems):
    for path in sorted((ROOT / "src" / folder).glob("*.[ch]*")):
        if not path.stem.endswith("_windows") and (not stems or path.stem in stems):
            yield path


def prepare(folder):
    """The tree with the folder's changes in it; the changes by number."""
    stems, _ = FOLDERS.get(folder, ([], None))
    files = copy_repository()
    if not (BUILD / "compile_commands.json").exists():
        for name, path in files.items():
            put(TREE / name, path.read_bytes())
        configure()
    arguments = arguments_of(folder)
    book = Book()
    rewritten = {}
    cursors, errors = find.parse(list(sources_of(folder, stems)), arguments)
    for error in errors:
        print(f"clang: {error}")
    for path, found in cursors.items():
        name = str(pathlib.Path(path).relative_to(ROOT))
        rewritten[name] = find.Source(pathlib.Path(path), name, found, book).written()
    for name, path in files.items():
        put(TREE / name, rewritten.get(name) or path.read_bytes())
        if (path.stat().st_mode ^ (TREE / name).stat().st_mode) & 0o111:
            (TREE / name).chmod(path.stat().st_mode)
    put(TREE / "src" / "davo_mutants.h", (ROOT / "tools" / "mutants" / "davo_mutants.h").read_bytes())
    for path in (TREE / "src").rglob("*.*"):
        name = str(path.relative_to(TREE))
        if name not in files and path.name != "davo_mutants.h":
            path.unlink()
    return book.changes


def configure():
    run("cmake", "--preset", "release", cwd=TREE, stdout=subprocess.DEVNULL)


def tests_of(folder):
    listed = json.loads(run("ctest", "--test-dir", str(BUILD), "--show-only=json-v1",
                            stdout=subprocess.PIPE).stdout)["tests"]
    wanted = FOLDERS.get(folder, ([], None))[1]
    return {test["name"]: test for test in listed
            if (test["name"] in wanted if wanted else
                re.fullmatch(rf"{folder}_\w*test", test["name"]) and "150_percent" not in test["name"])}


def build(tests):
    built = subprocess.run(["nice", "-n", "15", "cmake", "--build", str(BUILD), "--target", *tests, "--", "-j1"],
                           text=True, stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
    if built.returncode:
        sys.exit(built.stdout)


def live_numbers(folder, programs):
    """The changes that are in code that runs: constants that the compiler needs cannot change."""
    files = [str(path) for path in (BUILD / "src" / folder).glob("*.a")] + programs
    listed = subprocess.run(["nm", *files], text=True, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL).stdout
    return {int(number) for number in re.findall(r"davo_mutants4LiveILi(\d+)E", listed)}


class Program:
    """A test's program with its environment, as ctest starts it."""

    def __init__(self, test, room):
        self.path = test["command"][0]
        properties = {one["name"]: one["value"] for one in test["properties"]}
        self.folder = properties.get("WORKING_DIRECTORY", str(BUILD))
        self.room = room
        self.environment = dict(os.environ, DAVO_SEED="1", GTEST_FAIL_FAST="1", GTEST_BREAK_ON_FAILURE="0")
        self.environment.pop("DAVO_LONG", None)
        for pair in properties.get("ENVIRONMENT", []):
            name, value = pair.split("=", 1)
            self.environment[name] = value

    def cases(self):
        listed = run(self.path, "--gtest_list_tests", stdout=subprocess.PIPE, env=self.environment).stdout
        suite = ""
        for line in listed.splitlines():
            line = line.split("#")[0].rstrip()
            if line.startswith("  "):
                yield suite + line.strip()
            elif line.endswith("."):
                suite = line

    def passes(self, cases, seconds, **variables):
        """Whether they pass in these seconds of processor time."""
        def limit():
            resource.setrlimit(resource.RLIMIT_CPU, (int(seconds) + 1, int(seconds) + 2))
            resource.setrlimit(resource.RLIMIT_AS, (6 << 30, 6 << 30))
            resource.setrlimit(resource.RLIMIT_CORE, (0, 0))
            resource.setrlimit(resource.RLIMIT_FSIZE, (1 << 30, 1 << 30))
        place = tempfile.mkdtemp(dir=self.room)
        os.chmod(place, 0o755)  # some tests change their user
        started = subprocess.Popen(
            [self.path, "--gtest_filter=" + ":".join(cases)], cwd=self.folder, stdout=subprocess.DEVNULL,
            stderr=subprocess.DEVNULL, stdin=subprocess.DEVNULL, preexec_fn=limit, start_new_session=True,
            env=dict(self.environment, TMPDIR=place, **variables))
        try:
            return started.wait(timeout=30 + 10 * seconds) == 0
        except subprocess.TimeoutExpired:
            return False
        finally:
            try:
                os.killpg(started.pid, signal.SIGKILL)  # what the test has started, too
            except ProcessLookupError:
                pass
            started.wait()
            shutil.rmtree(place, ignore_errors=True)


def processor_seconds():
    """Of all tests so far: how busy the machine is does not count."""
    used = resource.getrusage(resource.RUSAGE_CHILDREN)
    return used.ru_utime + used.ru_stime


def learn(programs, slow, room):
    """For every case: its program, its seconds, and the changes that it comes by."""
    learnt = []
    for name, program in programs.items():
        for case in program.cases():
            reached = pathlib.Path(room) / "reached"
            reached.unlink(missing_ok=True)
            began = processor_seconds()
            passed = program.passes([case], 600, DAVO_MUTANTS_REACHED=str(reached))
            seconds = processor_seconds() - began
            if not passed:
                print(f"left out, fails without any change: {name} {case}")
                continue
            content = reached.read_bytes() if reached.exists() else b""
            numbers = {int.from_bytes(content[at:at + 4], "little") for at in range(0, len(content), 4)}
            if seconds > slow:
                print(f"left out, takes {seconds:.1f} s: {name} {case}")
            else:
                learnt.append((program, case, seconds, numbers))
    return sorted(learnt, key=lambda one: one[2])


def survives(number, learnt):
    """Whether no case notices the change."""
    reaching = [(program, case, seconds) for program, case, seconds, numbers in learnt if number in numbers]
    batches = collections.defaultdict(list)
    for program, case, seconds in reaching:
        batches[program if seconds <= QUICK else (program, case)].append((program, case, seconds))
    for batch in batches.values():
        program = batch[0][0]
        seconds = sum(one[2] for one in batch)
        for at in range(0, len(batch), 100):
            cases = [case for _, case, _ in batch[at:at + 100]]
            if not program.passes(cases, 3 * seconds + 2, DAVO_MUTANT=str(number)):
                return False
    return True


def kept_reasons(folder):
    """For every change that is known to survive: its reason. "path", "  name", "    reason"."""
    reasons, path, name = {}, "", ""
    file = KEPT / f"{folder}.txt"
    for line in file.read_text().splitlines() if file.exists() else []:
        if not line or line.startswith("#"):
            continue
        if line.startswith("    "):
            reasons[path, name] = (reasons.get((path, name), "") + " " + line.strip()).strip()
        elif line.startswith("  "):
            name = line.strip()
        else:
            path = line.strip()
    return reasons


def try_all(folder, options):
    began = time.monotonic()
    changes = prepare(folder)
    configure()
    tests = tests_of(folder)
    build(list(tests))
    tests = tests_of(folder)  # now with the programs' paths
    with tempfile.TemporaryDirectory(dir="/dev/shm" if pathlib.Path("/dev/shm").exists() else None) as room:
        os.chmod(room, 0o755)
        programs = {name: Program(test, room) for name, test in tests.items()}
        live = live_numbers(folder, [program.path for program in programs.values()])
        changes = [change for change in changes
                   if change.number in live and change.number % options.every == 0]
        print(f"{len(changes)} changes; {time.monotonic() - began:.0f} s to build", flush=True)
        learnt = learn(programs, options.slow, room)
        print(f"{len(learnt)} cases; {time.monotonic() - began:.0f} s", flush=True)
        state = TREE.parent / f"{folder}.json"
        before = json.loads(state.read_text()) if options.survivors and state.exists() else {}
        survivors = []
        for at, change in enumerate(changes):
            if before.get(f"{change.path} {change.name}") == "killed":
                continue
            if survives(change.number, learnt):
                reached = any(change.number in one[3] for one in learnt)
                survivors.append((change, reached))
                if options.verbose:
                    print(f"{at + 1}/{len(changes)} {change.path}:{change.line}\n  {change.name}", flush=True)
    names = {f"{change.path} {change.name}" for change, _ in survivors}
    state.write_text(json.dumps({f"{change.path} {change.name}": "alive" if f"{change.path} {change.name}" in names
                                 else "killed" for change in changes}))
    return report(folder, changes, survivors, options.every > 1, time.monotonic() - began)


def report(folder, changes, survivors, sampled, seconds):
    reasons = kept_reasons(folder)
    new = [one for one in survivors if (one[0].path, one[0].name) not in reasons]
    path = ""
    for change, reached in new:
        if change.path != path:
            path = change.path
            print(path)
        print(f"  {change.name}\n    line {change.line}{'' if reached else ', no case comes by it'}")
    alive = {(change.path, change.name) for change, _ in survivors}
    for path, name in reasons:
        if (path, name) not in alive and not sampled:
            print(f"kept without need: {path}\n  {name}")
    killed = len(changes) - len(survivors)
    matter = killed + len(new)
    print(f"{folder}: {len(changes)} changes, {killed} noticed ({100 * killed / max(1, len(changes)):.1f} %), "
          f"{len(survivors) - len(new)} kept with a reason, {len(new)} survivors: "
          f"{100 * killed / max(1, matter):.1f} % of those that make a difference; {seconds:.0f} s")
    return not new


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--slow", type=float, default=5, help="leave out cases that take more seconds (5)")
    parser.add_argument("--survivors", action="store_true",
                        help="only what survived the last run: after tests were added")
    parser.add_argument("--every", type=int, default=1, metavar="N",
                        help="try every N-th change only: a sample of a large folder")
    parser.add_argument("--verbose", action="store_true", help="show survivors as they are found")
    parser.add_argument("folders", nargs="+", help=f"folders of src/: {', '.join(FOLDERS)}, or any other")
    options = parser.parse_args()
    for folder in options.folders:
        if not (ROOT / "src" / folder).is_dir():
            parser.error(f"no folder src/{folder}")
    return 0 if all([try_all(folder, options) for folder in options.folders]) else 1


if __name__ == "__main__":
    sys.exit(main())
