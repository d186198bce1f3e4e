#!/usr/bin/env python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""One program for a long time: sessions, downloads, reports, a cable that is pulled, a full disk.

    soak.py [--shots 2000] [--seed N] [--keep]

A shot of the real instrument takes some 15 seconds, so 2,000 of them are a working day; here its pauses
are a fiftieth. Each record file is compared byte for byte with what went over the line. At the end the
program has as many descriptors, threads and processes as after its first rounds, and its memory has not
grown.
"""

import argparse
import os
import pathlib
import random
import sys
import time

import built  # noqa: F401, the paths of the next ones
import disk_rig
import expected_download
import expected_record
import harness

NAMEPLATE = ("1200", "5")
BLANK_HEADER = [" " * 20] * 8
RECORDS = 3  # in the instrument's memory
GROWTH = 8.0  # MB that the memory may grow: a list of some hundred records, and its noise
WARM = 3  # rounds before the first that counts: each thing was done once or twice
SETTLE = 2  # seconds after which a program that does nothing is measured


class LogReader:
    """What came into a byte log since it was read last."""

    def __init__(self, path):
        self._path, self._at = path, 0

    def take(self):
        with open(self._path, encoding="latin-1", newline="\n") as log:
            log.seek(self._at)
            text = log.read()
        text = text[: text.rfind("\n") + 1]
        self._at += len(text)
        return expected_record.entries_of(text)


class Measured:
    """What a program takes of the machine."""

    def __init__(self, process):
        folder = pathlib.Path(f"/proc/{process.pid}")
        status = dict(line.split(":\t", 1) for line in (folder / "status").read_text().splitlines())
        self.memory = int(status["VmRSS"].split()[0]) / 1024
        self.threads = int(status["Threads"])
        self.descriptors = len(list((folder / "fd").iterdir()))
        children = [path.read_text().split() for path in folder.glob("task/*/children")]
        self.processes = sum(len(numbers) for numbers in children)

    def counts(self):
        return self.descriptors, self.threads, self.processes

    def __str__(self):
        return (f"{self.memory:.1f} MB, {self.descriptors} descriptors, {self.threads} threads, "
                f"{self.processes} processes")


class Soak:
    def __init__(self, rig, seed):
        self.rig = rig
        self.chance = random.Random(seed)
        self.program = rig.start_main()
        self.log = LogReader(rig.byte_log)
        self.entries = []  # of the log, since the session began
        self.session = []  # its shots
        self.sessions = 0
        self.instruments = 1
        self.counts = dict.fromkeys(
            ("shots", "dropped", "unplugged", "full disks", "records", "downloaded", "reports",
             "certificates", "saved later"), 0)

    def new_instrument(self):
        self.instruments += 1
        self.rig.byte_log = self.rig.folder / f"line{self.instruments}.log"
        self.rig.start_instrument(*options(self.chance.randrange(1 << 30)))
        self.log = LogReader(self.rig.byte_log)

    # A session.

    def take_shot(self):
        """The shot that the window has just called complete."""
        self.entries += self.log.take()
        shots = expected_record.shots_on_line(self.entries)
        assert len(shots) == 1, f"{len(shots)} shots on the line for one that is shown"
        self.entries = []
        self.session += shots
        self.counts["shots"] += 1

    def shoot(self, first):
        # After the cable was pulled nothing is asked, and the shot is a full one.
        if first or self.chance.random() < 0.15:
            harness.full_shot(self.program, first=first)
        else:
            harness.ratio_shot(self.program)
        self.take_shot()
        if self.chance.random() < 0.06:
            harness.repeat_shot(self.program)
            self.session.pop()
            self.counts["dropped"] += 1

    def pull_the_cable(self, first):
        harness.start_shot(self.program, first=first)
        harness.saturate(self.program)
        harness.end_group(self.rig.instrument)
        self.program.do(f'answer Ok "{harness.LOST}"')
        self.entries = []
        self.new_instrument()
        self.program.do('waitText cmdStart "&Start Test"')
        self.counts["unplugged"] += 1

    def shoot_on_a_full_disk(self, first):
        harness.start_shot(self.program, first=first)
        self.program.do(f'waitText lblMessage "{harness.RANGE}"')
        self.rig.fill_disk()
        try:
            harness.saturate(self.program)
            harness.await_ratio(self.program)
            self.program.do("click cmdContinue",
                            'waitContains msgBox "it is not yet safe on disk"', "answer Ok")
        finally:
            self.rig.empty_disk()
        self.program.do('waitContains lblDisk "is on the disk" 60000')
        self.take_shot()
        self.counts["full disks"] += 1

    def play_session(self, shots):
        self.sessions += 1
        self.session, self.entries = [], []
        self.log.take()
        harness.open_test_window(self.program)
        harness.type_nameplate(self.program, *NAMEPLATE)
        first = True
        while len(self.session) < shots:
            chance = self.chance.random()
            if chance < 0.02:
                self.pull_the_cable(first)
                first = True
            elif chance < 0.03 and self.rig.small_disk and not first:
                self.shoot_on_a_full_disk(first)
            else:
                self.shoot(first)
                first = False
        self.save(f"S{self.sessions:03}.txt")

    def save(self, name):
        chance = self.chance.random()
        if chance < 0.15:
            # Left without saving, twice asked; the start page offers it.
            self.program.do("click cmdExit", f'answer No "{harness.SAVE}"', "answer Yes",
                            "waitGone frmCControl", "wait lblWhen0")
            self.program.do("click cmdSaveSession0", f"chooseFile {name}", "waitGone sessionCards")
            self.counts["saved later"] += 1
        else:
            view = chance < 0.4 or self.sessions == 1
            harness.save_session(self.program, name, view=view)
            if view:
                self.await_report()
        actual = (self.rig.data / name).read_bytes()
        expected = expected_record.record_file(name, *expected_record.begun(actual), BLANK_HEADER,
                                               self.session, NAMEPLATE)
        assert actual == expected, f"{name} is\n{actual}\nand not\n{expected}"
        self.counts["records"] += 1

    def await_report(self):
        harness.wait_until(lambda: self.program.prompt() or not self.program.window("frmCControl"),
                           "the end of the report", 120)
        if self.program.prompt():  # what kind of workbook it is, once
            self.program.do("answer Ok")
        self.program.do("waitGone frmCControl")
        self.counts["reports"] += 1

    def certify(self):
        # Of the record that the start page shows, which it may not when a day has very many.
        if not self.program.control("cmdCertificate")["enabled"]:
            return
        self.program.do("click cmdCertificate", 'chooseFile "C.pdf"')
        try:
            self.program.do('waitContains lblSaved "C.pdf"')
        finally:
            (self.rig.data / "C.pdf").unlink(missing_ok=True)
        self.counts["certificates"] += 1

    # The instrument's memory.

    def download(self):
        for path in self.rig.data.glob("TST_*.txt"):
            path.unlink()
        self.log.take()
        self.program.do(
            "menu mnuDownload", "wait frmTestList", f'waitText lblStatus "Total Records: {RECORDS}"',
            "waitText cmdSave Save", "key Ctrl+A",
            f'waitText lblSelect "Select: {RECORDS} of {RECORDS}"', "click cmdSave",
            f'waitText lblMessage "{RECORDS} of {RECORDS} records were saved."',
            "waitEnabled cmdSave", "click cmdExit", "waitGone frmTestList")
        directory, records = expected_download.replies(self.log.take())
        for number, reply in records.items():
            actual = (self.rig.data / f"TST_{number}.txt").read_bytes()
            assert actual == expected_download.record_file(directory, number, reply), number
            self.counts["downloaded"] += 1

    def measure(self):
        time.sleep(SETTLE)
        return Measured(self.program.process)

    def play(self, shots):
        """Rounds until so many shots were taken; what the program took after each."""
        measured = []
        began = time.monotonic()
        while self.counts["shots"] < shots:
            left = shots - self.counts["shots"]
            self.play_session(min(left, self.chance.randrange(5, 90)))
            if not measured or self.chance.random() < 0.3:
                self.certify()
            # At the end of each round, so that the port is open each time that it is measured.
            self.download()
            measured.append(self.measure())
            print(f"{time.monotonic() - began:6.0f} s: {self.counts['shots']} shots, {measured[-1]}",
                  flush=True)
        return measured

    def check_end(self, measured):
        """Nothing is left over, and every shot is in one record."""
        held = sum(path.read_bytes().count(b"REC NUMBER: ")
                   for path in self.rig.data.glob("S*.txt"))
        kept = self.counts["shots"] - self.counts["dropped"]
        assert held == kept, f"{held} shots in the records, {kept} were kept"
        left = [path.name for path in self.rig.scratch.glob("TESTFILE*.txt")]
        assert not left, f"unsaved: {left}"
        first, last = measured[WARM if len(measured) > 2 * WARM else 0], measured[-1]
        assert first.counts() == last.counts(), f"it began with {first} and ended with {last}"
        assert last.memory - first.memory < GROWTH, f"it began with {first} and ended with {last}"
        return first


def options(seed):
    return ["--unpaced", "--quick", "--memory", str(RECORDS), "--seed", str(seed)]


def main(arguments=None):
    parser = argparse.ArgumentParser(description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--shots", type=int, default=2000)
    parser.add_argument("--seed", type=int, default=harness.SEED)
    parser.add_argument("--keep", action="store_true", help="the folder of a failed run")
    given = parser.parse_args(arguments)
    print(f"DAVO_SEED={given.seed}", flush=True)
    if given.keep:
        os.environ["DAVO_KEEP"] = "1"
    with disk_rig.DiskRig("32m", *options(given.seed)) as rig:
        soak = Soak(rig, given.seed)
        measured = soak.play(given.shots)
        first = soak.check_end(measured)
        code = harness.leave(soak.program)
        assert code == 0, f"the program ended with {code}"
        print(f"began {first}\nended {measured[-1]}\n{soak.counts}", flush=True)
    return 0


if __name__ == "__main__":
    sys.exit(main())
