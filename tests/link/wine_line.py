# SPDX-License-Identifier: GPL-3.0-or-later
"""Runs a Windows test in Wine with a line on its COM1.

wine_line.py PROGRAM ARGUMENT...: the line's far end is played here. The test asks for what the far
end is to do by lines on its standard output that begin with "line:", and reads one line of answer
from its standard input.
wine_line.py --instrument INSTRUMENT PROGRAM ARGUMENT...: the simulated instrument is on the line.

Runs inside packaging/windows/in-wine, whose WINEPREFIX has the link line1 for its COM1. Nothing is
started unless that leads to a pseudo terminal: COM1 may otherwise be a port of this machine.
"""

import os
import pathlib
import queue
import select
import subprocess
import sys
import termios
import threading
import time
import tty

PREFIX = pathlib.Path(os.environ["WINEPREFIX"])
RUN = os.environ["DAVO_WINE_RUN"]
LINE = PREFIX / "line1"
SPEEDS = {termios.B9600: 9600, termios.B19200: 19200, termios.B38400: 38400}
PATIENCE = 10  # seconds


def check():
    com = PREFIX / "dosdevices" / "com1"
    if os.readlink(com) != str(LINE) or not os.path.realpath(LINE).startswith("/dev/pts/"):
        sys.exit(f"{com} is {os.path.realpath(com)}, not a pseudo terminal: nothing is started.")


class FarEnd:
    def __init__(self):
        self.master = self.slave = -1
        self.later = queue.Queue()
        threading.Thread(target=self.do_later, daemon=True).start()
        self.plug()

    def do_later(self):
        """In their order. By itself: a full line is emptied by a test that has its answer."""
        while True:
            act = self.later.get()
            try:
                act()
            finally:
                self.later.task_done()

    def plug(self):
        self.master, self.slave = os.openpty()
        tty.setraw(self.slave)
        LINE.unlink(missing_ok=True)
        LINE.symlink_to(os.ttyname(self.slave))
        return ""

    def unplug(self):
        os.close(self.slave)
        os.close(self.master)
        return ""

    def write(self, text):
        """The bytes, at once, as fast as the terminal takes them."""
        data = bytes.fromhex(text)
        while data:
            data = data[os.write(self.master, data[:2048]) :]
        return ""

    def writelater(self, milliseconds, text):
        """The bytes, after a while; the test goes on meanwhile."""
        self.later.put(lambda: (time.sleep(int(milliseconds) / 1000), self.write(text)))
        return ""

    def unpluglater(self, milliseconds):
        self.later.put(lambda: (time.sleep(int(milliseconds) / 1000), self.unplug()))
        return ""

    def read(self, size):
        """So many bytes, or what has come when no more does."""
        data = b""
        while len(data) < int(size):
            ready, _, _ = select.select([self.master], [], [], PATIENCE if not data else 2)
            if not ready:
                break
            data += os.read(self.master, 65536)
        return data.hex()

    def settings(self):
        flags = termios.tcgetattr(self.slave)
        bits = {termios.CS7: "7", termios.CS8: "8"}[flags[2] & termios.CSIZE]
        parity = "E" if flags[2] & termios.PARENB else "N"
        stop = "2" if flags[2] & termios.CSTOPB else "1"
        echo = " echo" if flags[3] & (termios.ECHO | termios.ICANON | termios.ISIG) else ""
        return f"{SPEEDS.get(flags[5], 0)},{parity},{bits},{stop}{echo}"


def serve(command):
    far_end = FarEnd()
    check()
    with subprocess.Popen(command, stdin=subprocess.PIPE, stdout=subprocess.PIPE) as test:
        for raw in test.stdout:
            line = raw.decode("utf-8", "replace").rstrip("\r\n")
            if not line.startswith("line: "):
                print(line, flush=True)
                continue
            name, *arguments = line.split()[1:]
            if not name.endswith("later"):
                far_end.later.join()
            test.stdin.write(getattr(far_end, name)(*arguments).encode() + b"\n")
            test.stdin.flush()
        return test.wait()


def with_instrument(instrument, command):
    LINE.unlink(missing_ok=True)
    process = subprocess.Popen([instrument, "--unpaced", "--quick", "--link", str(LINE)])
    try:
        end = time.monotonic() + PATIENCE
        while not LINE.exists() and time.monotonic() < end:
            time.sleep(0.01)
        check()
        return subprocess.call(command, stdin=subprocess.DEVNULL)
    finally:
        process.terminate()
        process.wait()


def main(arguments):
    try:
        if arguments[0] == "--instrument":
            return with_instrument(arguments[1], [RUN, *arguments[2:]])
        return serve([RUN, *arguments])
    finally:
        LINE.unlink(missing_ok=True)


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
