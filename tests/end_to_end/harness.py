# SPDX-License-Identifier: GPL-3.0-or-later
"""The real program and the simulated instrument in a folder of their own, driven by an operator.

Paths come from the environment (see CMakeLists.txt): DAVO_PROGRAM, DAVO_INSTRUMENT, DAVO_PLUGINS,
DAVO_KILL_AT_LIBRARY. Every process leads a process group of its own and is ended with its group.
"""

import contextlib
import itertools
import json
import os
import pathlib
import queue
import random
import re
import shutil
import signal
import subprocess
import tempfile
import threading
import time

PROGRAM = os.environ["DAVO_PROGRAM"]
INSTRUMENT = os.environ["DAVO_INSTRUMENT"]
PLUGINS = os.environ["DAVO_PLUGINS"]
KILL_AT = os.environ.get("DAVO_KILL_AT_LIBRARY", "")
SCREEN = pathlib.Path(__file__).parents[2] / "tools" / "driver" / "laptop_screen.json"
PATIENCE = 120  # seconds for anything that has no limit of its own
SEED = int(os.environ.get("DAVO_SEED", random.SystemRandom().getrandbits(32)))

SAVE = "Do you want to save the test record? "
VIEW = "Do you want to view test results? "
PLOTTING = "Plotting Excel Graphs, Please Wait..."
NO_VIEWER = "The report is finished, but this computer has no program that shows it. It is stored as "
RATIO_ONLY = "Run Ratio test only?"
LEAVE = "Do You Want to Exit?"
LOST = (
    "The connection to the DAVO was lost.\\nPlease check the cable and the adapter, then try again."
    "\\nAll complete shots and records are kept, but not what was running."
)

TO_ZERO = "TURN VOLTAGE DRIVE TO ZERO..."
RANGE = "SET THE VOLTAGE RANGE SELECTOR SWITCH"
SATURATE = "TURN VOLTAGE CONTROL UP UNTIL CT SATURATES (MAX 1000V)"
LOWER = "S-L-O-W-L-Y LOWER THE CURRENT NOW..."
RATIO = "SET VOLTAGE FROM 5V TO 100V MAX"


class DriverFailed(AssertionError):
    """The driver gave up, or the program ended while something was awaited."""


def share_of(every):
    """Of so many cases one is looked at; each of them when DAVO_LONG is set."""
    return 1 if "DAVO_LONG" in os.environ else every


def chosen(share, series):
    """1, 2, 3 ..., or one of every so many; the same seed picks the same ones for a series."""
    chance = random.Random(f"{SEED} {series}")
    for first in itertools.count(1, share):
        yield first + chance.randrange(share)


def wait_until(condition, what, limit=PATIENCE):
    end = time.monotonic() + limit
    while not condition():
        if time.monotonic() > end:
            raise AssertionError(f"waited {limit} s for {what}")
        time.sleep(0.01)


def end_group(process):
    """Ends a process and all that it started."""
    if process.poll() is None:
        for number in (signal.SIGTERM, signal.SIGKILL):
            try:
                os.killpg(process.pid, number)
                process.wait(5)
                break
            except subprocess.TimeoutExpired:
                continue
            except ProcessLookupError:
                break
    for stream in (process.stdin, process.stdout):
        with contextlib.suppress(BrokenPipeError):  # what it never read
            if stream:
                stream.close()


class Program:
    """The program with the driver in it."""

    def __init__(self, rig, environment=None):
        self.rig = rig
        self.environment = dict(os.environ, **rig.environment, **(environment or {}))
        self.lines = []
        self._new = queue.Queue()
        self.log = open(rig.folder / "program.log", "ab")
        self.process = subprocess.Popen(
            rig.command or [PROGRAM],
            env=self.environment,
            stdin=subprocess.PIPE,
            stdout=subprocess.PIPE,
            stderr=self.log,
            cwd=rig.folder,  # where a file dialog begins when the data folder has gone
            start_new_session=True,
        )
        self._reader = threading.Thread(target=self._read, daemon=True)
        self._reader.start()

    def _read(self):
        for raw in self.process.stdout:
            line = raw.decode("utf-8", "replace").rstrip("\r\n")
            self.lines.append(line)
            self._new.put(line)
        self._new.put(None)

    def _send(self, command):
        with contextlib.suppress(BrokenPipeError):  # its end is noticed where it is awaited
            self.process.stdin.write((command + "\n").encode())
            self.process.stdin.flush()

    def _await(self, wanted):
        while True:
            try:
                line = self._new.get(timeout=PATIENCE)
            except queue.Empty:
                raise DriverFailed(f"no answer to {wanted!r}") from None
            if line is None:
                raise DriverFailed(f"the program ended, rc {self.process.wait(PATIENCE)}, at {wanted!r}")
            if line.startswith("driver: FAILED"):
                detail = self._new.get(timeout=PATIENCE)
                raise DriverFailed(f"{line}\n{self.rig.instrument_state()}\n{detail}")
            if line.startswith(wanted):
                return line

    def do(self, *commands):
        """Gives the commands to the driver and returns when the last one is done."""
        for command in commands:
            self._send(command)
        for command in commands:
            self._await("driver: do " + command)

    def state(self):
        self._send("state")
        return json.loads(self._await("driver: state ").removeprefix("driver: state "))

    def window(self, name):
        """What a visible window shows; None when it is not visible."""
        for window in self.state()["windows"]:
            if window["name"] == name:
                return window
        return None

    def control(self, name):
        for window in self.state()["windows"]:
            if name in window["controls"]:
                return window["controls"][name]
        return None

    def text(self, control):
        return self.control(control)["text"]

    def prompt(self):
        """The text of the prompt that is shown; None without one."""
        window = self.window("msgBox")
        return window and window["text"]

    def wait_end(self, limit=PATIENCE):
        code = self.process.wait(limit)
        self._reader.join(PATIENCE)
        return code

    def end(self):
        end_group(self.process)
        self._reader.join(PATIENCE)
        self.log.close()


class Rig:
    """A folder with everything a run needs, the instrument on its line, and the program."""

    command = None  # PROGRAM

    def __init__(self, *instrument_options):
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="davo-"))
        self.data = self.folder / "Shots_Data"
        self.excel = self.folder / "Shots_Excel"
        self.scratch = self.folder / "data" / "davo"
        self.port = self.folder / "line"
        self.byte_log = self.folder / "line.log"
        self.pictures = self.folder / "pictures"
        self.environment = {
            "HOME": str(self.folder),
            "XDG_CONFIG_HOME": str(self.folder / "config"),
            "XDG_DATA_HOME": str(self.folder / "data"),
            # This machine's programs are not to open a report that nobody looks at.
            "XDG_DATA_DIRS": str(self.folder / "none"),
            "XDG_RUNTIME_DIR": str(self.folder / "runtime"),
            "QT_QPA_PLATFORM": f"offscreen:configfile={SCREEN}",
            "QT_PLUGIN_PATH": PLUGINS,
            "QT_QPA_GENERIC_PLUGINS": "davodriver",
            "DAVO_DRIVER_SCRIPT": "-",
            "DAVO_DRIVER_PICTURES": str(self.pictures),
        }
        for folder in (self.data, self.excel, self.folder / "config" / "davo", self.pictures):
            folder.mkdir(parents=True)
        (self.folder / "runtime").mkdir(mode=0o700)
        (self.folder / "config" / "davo" / "davo.ini").write_text(
            f"[DATAPATH]\nPATH\\PATHVAL={self.data}/\n\n[DAVO]\nPORTDEVICES\\COM1={self.port}\n"
        )
        self.programs = []
        self.instrument = None
        self.start_instrument(*instrument_options)

    def start_instrument(self, *options):
        self.instrument = subprocess.Popen(
            [INSTRUMENT, "--link", str(self.port), "--log", str(self.byte_log),
             "--die-with-parent", *options],
            stdin=subprocess.PIPE,
            stdout=subprocess.PIPE,
            stderr=subprocess.STDOUT,
            start_new_session=True,
        )
        wait_until(self.port.exists, "the instrument's line", 10)

    def instrument_state(self):
        ended = self.instrument and self.instrument.poll()
        return "the instrument runs" if ended is None else f"the instrument ended, rc {ended}"

    def start_program(self, environment=None):
        program = Program(self, environment)
        self.programs.append(program)
        return program

    def start_main(self):
        """The same, and the main window is there."""
        program = self.start_program()
        program.do("wait frmMain")
        return program

    def close(self, keep=False):
        for program in self.programs:
            program.end()
        if self.instrument:
            end_group(self.instrument)
        if keep:
            print("kept:", self.folder)
        else:
            shutil.rmtree(self.folder, ignore_errors=True)

    def __enter__(self):
        return self

    def __exit__(self, kind, error, trace):
        self.close(keep=kind is not None and "DAVO_KEEP" in os.environ)


@contextlib.contextmanager
def started(*instrument_options):
    """A rig and its program, which shows the main window."""
    with Rig(*instrument_options) as rig:
        yield rig, rig.start_main()


@contextlib.contextmanager
def session(*instrument_options):
    """The same; at the end the program that was started last is left by its menu and ends well."""
    with started(*instrument_options) as (rig, program):
        yield rig, program
        code = leave(rig.programs[-1])
        if code != 0:
            raise AssertionError(f"the program ended with {code}")


def processor_seconds(program):
    fields = pathlib.Path(f"/proc/{program.process.pid}/stat").read_text().rsplit(")", 1)[1].split()
    return (int(fields[11]) + int(fields[12])) / os.sysconf("SC_CLK_TCK")


def idle_share(program, seconds):
    """What the program takes of one core over so many seconds; the driver sleeps meanwhile."""
    time.sleep(0.5)
    before, began = processor_seconds(program), time.monotonic()
    time.sleep(seconds)
    return (processor_seconds(program) - before) / (time.monotonic() - began)


# What the operator does, step by step.


def open_test_window(program, menu="mnuBoth"):
    program.do("wait frmMain", f"menu {menu}", "wait frmCControl")
    # Its readiness check has been answered.
    program.do("waitDisabled cmdCancel", "waitEnabled cmdStart")


def start_shot(program, ratio_only=False, first=False, both=True):
    program.do("click cmdStart")
    if both and not first:
        program.do(f'answer {"Yes" if ratio_only else "No"} "{RATIO_ONLY}"')


def type_nameplate(program, high=1200, low=5):
    program.do(f"type txtHVolt {high}", "focusOut", f"type txtXVolt {low}", "focusOut")


def saturate(program):
    """From the range prompt to the readings of the saturation test."""
    program.do(f'waitText lblMessage "{RANGE}"', "click cmdContinue")
    program.do(f'waitText lblMessage "{SATURATE}"', "waitEnabled cmdContinue")


def await_ratio(program):
    """From the click that ends the saturation to the readings of the ratio test."""
    program.do("click cmdContinue", f'waitText lblMessage "{RATIO}" 60000')


def complete(program):
    program.do("click cmdContinue", 'waitText lblTest "TEST COMPLETE."')


def full_shot(program, first=False):
    start_shot(program, first=first)
    saturate(program)
    await_ratio(program)
    complete(program)


def ratio_shot(program, first=False, both=True):
    start_shot(program, ratio_only=True, first=first, both=both)
    program.do(f'waitText lblMessage "{RATIO}" 60000')
    complete(program)


def repeat_shot(program):
    program.do('waitText cmdContinue "&Repeat Test"', "click cmdContinue")


def close_test_window(program):
    program.do("click cmdExit", "waitGone frmCControl")


def save_session(program, name, view=False):
    program.do("click cmdExit", f'answer Yes "{SAVE}"', f'chooseFile "{name}"')
    finish_save(program, view)


def finish_save(program, view=False):
    """After the name was chosen: without a report the window closes."""
    if view:
        program.do(f'answer Yes "{VIEW}"')
    else:
        program.do(f'answer No "{VIEW}"', "waitGone frmCControl")


def leave(program):
    """Leaves the program by its menu; the exit code."""
    program.do("menu mnuExit", f'answer Yes "{LEAVE}"')
    return program.wait_end()
