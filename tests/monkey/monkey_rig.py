# SPDX-License-Identifier: GPL-3.0-or-later
"""The program and the instrument under a monkey's hands, and what must be so after each act."""

import collections
import json
import os
import pathlib
import queue
import re
import shutil
import signal
import threading
import time

import accounts
import disk_rig
import harness

DISK = "@disk@"  # in an act
FROZEN = pathlib.Path(__file__).resolve().parents[1] / "frozen" / "3.15"
OLD_RECORDS = ["data/Ordinary.txt", "data/Edited.txt", "download/TST_001.txt",
               "download/TST_002.txt"]
HANG = 5  # seconds without an answer, on a machine that does not lag
LAGGING = 20  # so many times what this process is late itself comes on top
BUSY = 1.0  # seconds of processor time without an answer
SETTLED = 15  # seconds in which a state that may be on its way must have come
COMPLETE = "driver: painted lblTest TEST COMPLETE."
REPEAT = "driver: pressed cmdContinue &Repeat Test"
# Of a message, which every look has in its line.
UNSAFE = "it is not yet safe on disk"
# Questions whose Yes takes a record away.
DESTROYS = re.compile(r"override|overwrit|replace|delete|exists|Are you sure", re.I)

class Heartbeat(threading.Thread):
    """How late this process is when it wants to be woken: what a busy machine costs."""

    def __init__(self):
        super().__init__(daemon=True)
        self._worst = 0
        self._ended = threading.Event()

    def run(self):
        while not self._ended.is_set():
            began = time.monotonic()
            time.sleep(0.02)
            self._worst = max(self._worst, time.monotonic() - began - 0.02)

    def take(self):
        worst, self._worst = self._worst, 0
        return worst

    def end(self):
        self._ended.set()


class Totals:
    def __init__(self):
        self.counts = collections.Counter()
        self.slowest = 0

    def add(self, other):
        self.counts += other.counts
        self.slowest = max(self.slowest, other.slowest)

    def __str__(self):
        counts = ", ".join(f"{number} {name}" for name, number in sorted(self.counts.items()))
        return f"{counts}; slowest answer {self.slowest:.2f} s"


class MonkeyRig(disk_rig.DiskRig):
    def __init__(self, seed):
        self.seed = seed
        self.plugged = True
        self.clean = True
        self.totals = Totals()
        self.acts = []
        self.line = accounts.Line()
        self.logs = {}  # whether the line of each was without faults
        self.shown = []  # shots that the screen called complete and nobody dropped
        self.dropped = set()  # the names of those that he dropped by the button
        self.strangers = set()  # names of files that the program did not write
        self.last = {"acts": [], "dialogs": [], "children": []}
        self.heart = Heartbeat()
        self.heart.start()
        self.instruments = 0
        self.program = None
        self._seen = 0
        self.new_lines = []
        self.replaced = 0  # when the operator agreed last that a file goes
        super().__init__("4m", *self.instrument_options())
        self.away = self.disk / "away"
        # Most have some records already.
        self.old = []
        if seed % 4:
            for name in OLD_RECORDS:
                shutil.copy(FROZEN / name, self.data)
            self.old = accounts.old_shots(self.data)
        self.shown = list(self.old)

    def instrument_options(self, fault=""):
        self.instruments += 1
        options = ["--unpaced", "--quick", "--memory", str(2 + self.seed % 5),
                   "--seed", str(self.seed * 1000 + self.instruments)]
        return options + (["--fault", fault] if fault else [])

    # What an act may be.

    def running(self):
        return self.program is not None and self.program.process.poll() is None

    def folders(self):
        """As acts have them, which are to be the same in another run's folder."""
        return [f"{DISK}/Shots_Data/", f"{DISK}/other/Shots_Data/", f"{DISK}/nowhere"]

    def play(self, source):
        (self.disk / "other" / "Shots_Data").mkdir(parents=True)
        self.do("!start")
        while True:
            act = source.next(self.last, self)
            if act is None:
                break
            self.do(act)
        self.finish()

    def do(self, act):
        self.acts.append(act)
        self.totals.counts["acts"] += 0 if act.startswith("!pause") else 1
        before = self.last
        if act.startswith("!"):
            word, *rest = act[1:].split(" ", 1)
            getattr(self, "act_" + word)(*rest)
        elif self.running():
            self.program._send(act.replace(DISK, str(self.disk)))
        self.look()
        if "DAVO_MONKEY_TALKS" in os.environ:
            print(act, self.last["children"], [d["text"][:40] for d in self.last["dialogs"]],
                  [line for line in self.program.lines[self._seen :] if " look" not in line])
        self.check(act, before)

    def act_start(self):
        if self.running():
            return
        self.program, self._seen = self.start_program(), 0
        self.totals.counts["starts"] += 1
        for command in ("lenient", "watch lblTest"):
            self.program.do(command)
        end = time.monotonic() + harness.PATIENCE
        while self.running():
            self.look()
            if "file" in self.last or self.last["dialogs"]:
                return
            assert time.monotonic() < end, "the main window does not come"
            time.sleep(0.05)

    def act_pause(self, seconds):
        time.sleep(float(seconds))

    def act_unplug(self):
        self.plugged = False
        harness.end_group(self.instrument)
        self.line.end(self.byte_log, self.clean)
        self.logs[self.byte_log] = self.clean
        self.totals.counts["unplugged"] += 1

    def act_plug(self, fault=""):
        if self.plugged:
            self.act_unplug()
        self.clean = not fault
        self.byte_log = self.folder / f"line{self.instruments}.log"
        self.start_instrument(*self.instrument_options(fault))
        self.plugged = True

    def act_kill(self):
        self.end_program(signal.SIGKILL)

    def act_term(self):
        self.end_program(signal.SIGTERM)

    def end_program(self, number):
        if not self.running():
            return
        self.program.process.send_signal(number)
        code = self.program.wait_end()
        assert code in (0, -number), f"ended with {code} at {number.name}"
        self.program_ended()
        self.totals.counts[number.name] += 1

    def act_disk(self):
        if self.filler.exists():
            self.empty_disk()
            return
        self.fill_disk()
        self.totals.counts["full disks"] += 1

    def act_folder(self):
        """The data folder goes, as with its stick, and comes back."""
        if not self.away.exists():
            if self.data.exists():
                self.data.rename(self.away)
            return
        if self.data.exists():
            for path in self.away.iterdir():
                if not (self.data / path.name).exists():
                    path.rename(self.data / path.name)
            shutil.rmtree(self.away)
        else:
            self.away.rename(self.data)

    def act_file(self, words):
        """A file of the data folder changes underneath."""
        kind, number = words.split()
        number = int(number)
        if not self.data.exists() or self.filler.exists():
            return
        records = sorted(path for path in self.data.glob("*.txt") if path.is_file())
        record = records[number % len(records)] if records else None
        new = self.data / f"S{number}.txt"
        if kind == "garbage":
            new.write_bytes(bytes((number * i * i) % 256 for i in range(3000)))
            self.strangers.add(new.name)
        elif kind == "empty":
            new.write_bytes(b"")
            self.strangers.add(new.name)
        elif kind == "folder":
            new.mkdir(exist_ok=True)
            self.strangers.add(new.name)
        elif kind == "directory":
            (self.data / "DIRDNLD.DNL").write_bytes(b"REC==999\r\nnothing\r\n")
        elif kind == "scratch":
            for path in self.scratch.glob("nothing*"):
                path.unlink()
        elif kind == "stranger" and record:
            new.write_bytes(record.read_bytes())
            self.strangers.add(new.name)
        elif kind == "cut" and record:
            record.write_bytes(record.read_bytes()[: number * 3])
            self.strangers.add(record.name)
        elif kind == "delete" and record:
            record.unlink()

    # What must be so.

    def program_ended(self):
        self.program.end()
        errors = (self.folder / "program.log").read_text("utf-8", "replace")
        assert "terminate called" not in errors and "ASSERT" not in errors, errors[-2000:]
        self.last = {"acts": [], "dialogs": [], "children": []}

    def main_seconds(self):
        """The processor time of the thread that has the windows."""
        number = self.program.process.pid
        try:
            text = pathlib.Path(f"/proc/{number}/task/{number}/stat").read_text()
        except OSError:
            return 0
        fields = text.rsplit(")", 1)[1].split()
        return (int(fields[11]) + int(fields[12])) / os.sysconf("SC_CLK_TCK")

    def look(self):
        """Asks what is in front of the operator; the program may end instead."""
        if not self.program or self.program.process.returncode is not None:
            return
        self.heart.take()
        busy, began = self.main_seconds(), time.monotonic()
        self.program._send("look")
        try:
            answer = self.program._await("driver: look ")
        except harness.DriverFailed as error:
            if "no answer" in str(error):
                raise AssertionError(f"the program hangs: {error}") from None
            code = self.program.wait_end()
            assert code == 0, f"the program ended with {code}: {error}"
            self.totals.counts["left"] += 1
            self.program_ended()
            return
        self.last = json.loads(answer.removeprefix("driver: look "))
        waited, busy = time.monotonic() - began, self.main_seconds() - busy
        self.totals.slowest = max(self.totals.slowest, waited)
        lag = self.heart.take()
        assert busy <= BUSY, f"the windows' thread was busy for {busy:.1f} s"
        assert waited <= HANG + LAGGING * lag, f"no answer for {waited:.1f} s (lag {lag:.2f} s)"

    def wrong(self):
        """What is not as it must be; None when all is well."""
        look = self.last
        if not self.running():
            return None
        if len(look["dialogs"]) > 1:
            return f"{len(look['dialogs'])} dialogs: {look['dialogs']}"
        if not look["acts"] and not look["popup"]:
            return "there is nothing that the operator could do"
        if "file" in look and look["file"] == bool(look["children"]):
            state = "enabled" if look["file"] else "disabled"
            return f"File is {state} with the windows {look['children']}"
        return None

    def check(self, act, before):
        end = time.monotonic() + SETTLED
        while self.wrong():
            assert time.monotonic() < end, self.wrong()
            time.sleep(0.1)
            self.look()
        self.take_shown()
        end = time.monotonic() + 3
        missing = self.missing()
        while missing and not self.told_unsafe() and time.monotonic() < end:
            time.sleep(0.2)  # a file may be on its way from name to name
            self.look()
            missing = self.missing()
        drops = self.drops(act, before)
        if not missing:
            return
        names = ", ".join(shot.name for shot in missing)
        if drops:
            self.totals.counts["shots dropped"] += len(missing)
        elif self.told_unsafe() and not self.running():
            self.totals.counts["shots lost that were said not to be safe"] += len(missing)
        elif self.told_unsafe():
            return  # the program has it in memory, and writes it once it can
        else:
            raise AssertionError(f"shown as complete and in no file: {names}")
        self.shown = [shot for shot in self.shown if shot not in missing]

    def told_unsafe(self):
        """Whether this program has said that the disk does not take a shot."""
        return any(UNSAFE in line for line in self.program.lines)

    def shots(self):
        return self.line.shots(self.byte_log if self.plugged else None, self.clean)

    def take_shown(self):
        """The shots that were painted as complete since the last time."""
        if not self.program:
            return
        end = len(self.program.lines)
        self.new_lines = self.program.lines[self._seen : end]
        self._seen = end
        for line in self.new_lines:
            if line.startswith(COMPLETE):
                self.shot_shown()
            elif line.startswith(REPEAT):
                self.shot_dropped()

    def shot_shown(self):
        shots = self.shots()
        assert shots or not self.clean, "a shot is shown as complete that was not on the line"
        known = self.dropped | {shot.name for shot in self.shown}
        if shots and shots[-1].name not in known and shots[-1].whole:
            self.shown.append(shots[-1])
            self.totals.counts["shots shown"] += 1

    def shot_dropped(self):
        """By the operator, even before it was painted as complete. A file may have it until the disk
        takes a newer one."""
        shots = self.shots()
        if shots:
            self.dropped.add(shots[-1].name)
            self.shown = [shot for shot in self.shown if shot.name != shots[-1].name]
            self.totals.counts["shots dropped"] += 1

    def missing(self):
        if not self.shown:
            return []
        return accounts.missing_shots(self.shown, accounts.stored_files(self.folder))

    def drops(self, act, before):
        """Whether an act may take shots away that are in a file."""
        if act.startswith(("!file delete", "!file cut")):
            return True
        if "key Alt+R 0" in self.acts[-2:]:  # which clicks a moment later
            return True
        asked = any(DESTROYS.search(dialog["text"]) for dialog in before["dialogs"])
        if asked and act.startswith(("answer Yes", "key")):
            self.replaced = time.monotonic()
        # A download takes its time.
        return time.monotonic() - self.replaced < 10

    # The end.

    def finish(self):
        """All is well again; what is offered is saved, and everything agrees."""
        self.acts.append("# the end")
        self.logs[self.byte_log] = self.clean
        if self.filler.exists():
            self.act_disk()
        if self.away.exists():
            self.act_folder()
        self.rescue()
        if self.running():
            self.end_program(signal.SIGKILL)
        self.act_plug()
        self.act_start()
        self.save_offered()
        self.program._send("menu mnuExit 5000")
        self.program._send(f'answer Yes "{harness.LEAVE}" 5000')
        code = self.program.wait_end()
        assert code == 0, f"the program ended with {code}"
        self.program_ended()
        missing = self.missing()
        assert not missing, f"at the end in no file: {[shot.name for shot in missing]}"
        left = [path.name for path in self.scratch.glob("TESTFILE*.txt")
                if any(shot.count_in_file(path, path.read_bytes()) for shot in self.shots())]
        assert not left, f"still unsaved: {left}"
        self.check_folder()

    def rescue(self):
        """There is room on the disk again: what was in memory only must get there."""
        end = time.monotonic() + SETTLED
        while self.running() and self.missing():
            names = [shot.name for shot in self.missing()]
            assert time.monotonic() < end, f"in memory and not on the disk: {names}"
            if self.last["dialogs"]:
                self.program._send("key Escape 0")
            time.sleep(0.2)
            self.look()

    def save_offered(self):
        for number in range(100):
            end = time.monotonic() + SETTLED
            while self.last["dialogs"] and time.monotonic() < end:
                self.program._send("key Escape 0")
                self.look()
            saves = [act["do"] for act in self.last["acts"] if "cmdSaveSession" in act["do"]]
            later = [act["do"] for act in self.last["acts"] if "cmdShowLater" in act["do"]]
            if not saves and not later:
                return
            if not saves:
                self.program._send(later[0])
                self.look()
                continue
            self.program.do(f"{saves[0]} 5000", f"chooseFile Offered{number}.txt 5000")
            time.sleep(0.1)
            self.look()
        raise AssertionError("sessions are offered without an end")

    def check_folder(self):
        shots = self.shots()
        troubles = []
        downloaded = {shot.parts[0] for shot in self.old}
        for log in self.logs if all(self.logs.values()) else ():
            downloaded |= accounts.downloaded_shots(log)
        for path in sorted(self.folder.rglob("Shots_Data/*.txt")):
            if path.name in self.strangers or not path.is_file():
                continue
            data = path.read_bytes()
            if not accounts.is_record(data):
                continue
            self.totals.counts["records"] += 1
            if b"REC NUMBER:  " not in data or all(self.logs.values()):
                troubles += accounts.record_troubles(path, data, shots, downloaded)
        # The operator may have chosen another data folder.
        settings = (self.folder / "config" / "davo" / "davo.ini").read_text("utf-8")
        listed = pathlib.Path(re.search(r"^PATH\\PATHVAL=(.*)$", settings, re.M)[1])
        if listed.is_dir():
            troubles += accounts.directory_troubles(listed, self.strangers)
        assert not troubles, "\n".join(troubles)

    def summary(self):
        return self.totals

    def report(self, failure):
        """A failure with what was done before, which can be replayed."""
        file = pathlib.Path(os.environ.get("DAVO_MONKEY_ACTS", self.folder.parent))
        file = file / f"davo-monkey-{self.seed}.acts"
        file.write_text("\n".join(self.acts) + "\n")
        acts = "\n  ".join(act for act in self.acts)
        log = (self.folder / "program.log").read_text("utf-8", "replace")[-1500:]
        return (f"{failure}\nthe acts, also in {file}:\n  {acts}\n"
                f"in front: {json.dumps(self.last)[:1500]}\nits messages: {log}")

    def close(self, keep=False):
        self.heart.end()
        super().close(keep)
