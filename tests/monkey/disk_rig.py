# SPDX-License-Identifier: GPL-3.0-or-later
"""The program in a folder of its own, on a small disk, apart from this machine's ports and programs."""

import shutil
import subprocess

import harness

# The program sees no built-in port of the machine, and makes its reports itself, which takes a
# tenth of what an office program takes.
HIDDEN = """
for port in /dev/ttyS*; do [ ! -e "$port" ] || mount --bind /dev/null "$port"; done
[ ! -d /usr/lib/libreoffice/program ] || mount -t tmpfs none /usr/lib/libreoffice/program
exec "$0"
"""


def can_hide():
    return subprocess.run(["unshare", "-m", "true"], capture_output=True, check=False).returncode == 0


class DiskRig(harness.Rig):
    """The rig of the other tests; all that the program writes is on a disk that can be full."""

    def __init__(self, size, *instrument_options):
        super().__init__(*instrument_options)
        if can_hide():
            self.command = ["unshare", "-m", "sh", "-c", HIDDEN, harness.PROGRAM]
        self._make_disk(size)
        self._make_viewer()

    def _make_disk(self, size):
        disk = self.folder / "disk"
        disk.mkdir()
        mount = ["mount", "-t", "tmpfs", "-o", f"size={size}", "tmpfs", str(disk)]
        self.small_disk = subprocess.run(mount, capture_output=True, check=False).returncode == 0
        self.disk, self.filler = disk, disk / "filler"
        for name in ("Shots_Data", "Shots_Excel"):
            shutil.rmtree(self.folder / name)
            (disk / name).mkdir()
        self.data, self.excel = disk / "Shots_Data", disk / "Shots_Excel"
        self.scratch = disk / "data" / "davo"
        self.environment["XDG_DATA_HOME"] = str(disk / "data")
        (self.folder / "config" / "davo" / "davo.ini").write_text(
            f"[DATAPATH]\nPATH\\PATHVAL={self.data}/\n\n[DAVO]\nPORTDEVICES\\COM1={self.port}\n"
        )

    def _make_viewer(self):
        """Something that shows reports and the guide: a program that ends at once."""
        applications = self.folder / "none" / "applications"
        applications.mkdir(parents=True)
        (applications / "viewer.desktop").write_text(
            "[Desktop Entry]\nType=Application\nName=Viewer\nExec=/bin/true %f\n"
        )
        kinds = ["text/html", "application/pdf", "application/vnd.ms-excel",
                 "application/vnd.openxmlformats-officedocument.spreadsheetml.sheet"]
        (applications / "mimeinfo.cache").write_text(
            "[MIME Cache]\n" + "".join(f"{kind}=viewer.desktop;\n" for kind in kinds)
        )

    def fill_disk(self):
        with open(self.filler, "wb", buffering=0) as file:
            for size in (4096, 1):
                try:
                    while file.write(b"x" * size):
                        pass
                except OSError:
                    continue

    def empty_disk(self):
        self.filler.unlink()

    def close(self, keep=False):
        for program in self.programs:
            program.end()
        if keep:
            shutil.copytree(self.disk, self.folder / "disk.kept", dirs_exist_ok=True)
        if self.small_disk:
            subprocess.run(["umount", "-l", str(self.disk)], check=False)
        super().close(keep)
