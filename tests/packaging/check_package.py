# SPDX-License-Identifier: GPL-3.0-or-later
"""What the Debian package must be: check_package.py PACKAGE. Names every fault and ends with 1."""

import gzip
import hashlib
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile

SOURCES = pathlib.Path(__file__).resolve().parents[2]
ICON_SIZES = (16, 24, 32, 48, 64, 128, 256)
PROGRAMS = ("usr/bin/davo", "usr/bin/davo-report", "usr/bin/davo-instrument",
            "usr/bin/davo-line")
COMPLETION = "usr/share/bash-completion/completions/davo-report"
MODULE = "usr/lib/davo/libdavo_reports_calc.so"
DESKTOP = "usr/share/applications/davo.desktop"
METAINFO = "usr/share/metainfo/local.davo.davo.metainfo.xml"
GUIDE = "usr/share/davo/guide/"
TEMPLATE = "usr/share/davo/DAVO_Header.xls"
CALC_FOLDER = "/usr/lib/libreoffice/program"  # where the module's libraries are, and only there

FILES = {
    *PROGRAMS,
    MODULE,
    COMPLETION,
    DESKTOP,
    METAINFO,
    TEMPLATE,
    "usr/share/doc/davo/changelog.gz",
    "usr/share/doc/davo/copyright",
    "usr/share/icons/hicolor/scalable/apps/davo.svg",
    *(f"usr/share/icons/hicolor/{size}x{size}/apps/davo.png" for size in ICON_SIZES),
    "usr/share/lintian/overrides/davo",
    "usr/share/man/man1/davo.1.gz",
    "usr/share/man/man1/davo-instrument.1.gz",
    "usr/share/man/man1/davo-line.1.gz",
    "usr/share/man/man1/davo-report.1.gz",
}
# As Debian 12 names them; later releases have other numbers behind two of the names.
LIBRARIES = {
    r"libc6",
    r"libqcustomplot2\.1-qt6",
    r"libqt6core6(t64)?",
    r"libqt6gui6",
    r"libqt6serialport6",
    r"libqt6widgets6",
    r"libstdc\+\+6",
    r"libxlsxwriter\d+",
}

faults = []


def expect(condition, fault):
    if not condition:
        faults.append(fault)


def output_of(*command):
    return subprocess.run(command, check=True, capture_output=True, text=True).stdout


def check_fields(package):
    fields = {}
    for line in output_of("dpkg-deb", "--field", package).splitlines():
        if not line.startswith(" "):
            name, _, value = line.partition(": ")
            fields[name] = value
    version = re.search(r"project\(davo VERSION (\S+)", (SOURCES / "CMakeLists.txt").read_text())[1]
    expect(fields["Package"] == "davo", f"package {fields['Package']}")
    expect(fields["Version"] == version, f"version {fields['Version']}, the program's is {version}")
    expect(fields["Section"] == "science", f"section {fields['Section']}")
    expect("Homepage" not in fields, "a home page, and there is none")
    alternatives = set(re.split(r"\s*\|\s*", fields.get("Recommends", "")))
    expect(alternatives == {"libreoffice-calc", "libreoffice-calc-nogui"}, f"recommends {alternatives}")
    depends = {re.split(r"[ :(]", entry.strip())[0] for entry in fields["Depends"].split(",")}
    missing = [name for name in sorted(LIBRARIES) if not any(re.fullmatch(name, each) for each in depends)]
    expect(not missing, f"no dependency on {missing}")
    needless = sorted(name for name in depends if name.endswith("-dev") or name.startswith("libreoffice"))
    expect(not needless, f"dependency on {needless}")
    kept = output_of("dpkg-parsechangelog", "-l", str(SOURCES / "packaging/debian/changelog"), "-S", "Version")
    expect(kept.strip() == version, f"the changelog begins with {kept.strip()}")
    return version


def check_version(root, version):
    """What is written by hand, and what is shown, has the program's version."""
    shown = version.rpartition(".")[0]
    for page in ("davo", "davo-report", "davo-instrument", "davo-line"):
        text = gzip.decompress((root / f"usr/share/man/man1/{page}.1.gz").read_bytes()).decode()
        expect(f'"DAVO {shown}"' in text.splitlines()[0], f"the manual page of {page} has another version")
    release = re.search(r'<release version="([^"]*)"', (root / METAINFO).read_text("utf-8"))[1]
    expect(release == version, f"the newest release in the metainfo is {release}")
    notes = re.search(r"^## \[(\d[^]]*)\]", (SOURCES / "CHANGELOG.md").read_text("utf-8"), re.M)[1]
    expect(notes == version, f"the newest release in CHANGELOG.md is {notes}")


def check_files(package, root):
    listed = set()
    for line in output_of("dpkg-deb", "--contents", package).splitlines():
        mode, owner, _, _, _, name = line.split(maxsplit=5)
        name = name.removeprefix("./")
        expect(owner == "root/root", f"{name} belongs to {owner}")
        if mode.startswith("d"):
            expect(mode == "drwxr-xr-x", f"folder {name} has mode {mode}")
            continue
        listed.add(name)
        wanted = "-rwxr-xr-x" if name in PROGRAMS else "-rw-r--r--"
        expect(mode == wanted, f"{name} has mode {mode}")
    expect(FILES <= listed, f"missing: {sorted(FILES - listed)}")
    strangers = sorted(name for name in listed - FILES if not name.startswith(GUIDE))
    expect(not strangers, f"not wanted: {strangers}")
    expect(GUIDE + "index.html" in listed, "the guide is missing")
    for line in (root / "DEBIAN/md5sums").read_text().splitlines():
        digest, name = line.split(maxsplit=1)
        content = (root / name).read_bytes() if (root / name).is_file() else b""
        expect(hashlib.md5(content).hexdigest() == digest, f"md5sum of {name}")
        listed.discard(name)
    expect(not listed, f"without md5sum: {sorted(listed)}")
    committed = (SOURCES / "packaging/template/DAVO_Header.xls").read_bytes()
    expect((root / TEMPLATE).read_bytes() == committed, "another template than the committed one")


def check_licence(root):
    """The program is under the GPL, and the text is the system's: policy forbids a second copy."""
    stanzas = (root / "usr/share/doc/davo/copyright").read_text("utf-8").split("\n\n")
    program = [stanza for stanza in stanzas if stanza.startswith("Files: *\n")]
    expect(len(program) == 1 and program[0].endswith("\nLicense: GPL-3+"), f"copyright says {program}")
    terms = [stanza for stanza in stanzas if stanza.startswith("License: GPL-3+\n")]
    expect(len(terms) == 1 and "/usr/share/common-licenses/GPL-3." in terms[0], f"the terms are {terms}")


def check_binaries(root):
    for name in (*PROGRAMS, MODULE):
        file = root / name
        if not file.exists():  # check_files says so
            continue
        run_path = re.findall(r"\((?:RPATH|RUNPATH)\).*\[(.*)\]", output_of("readelf", "-dW", str(file)))
        expect(run_path == ([CALC_FOLDER] if name == MODULE else []), f"{name} searches {run_path}")
        sections = output_of("readelf", "-SW", str(file))
        expect(".symtab" not in sections and ".debug_info" not in sections, f"{name} is not stripped")
        expect(str(SOURCES).encode() not in file.read_bytes(), f"{name} knows the source folder")


def check_links(root):
    """The guide's pages lead to files that are there."""
    for page in (root / GUIDE).rglob("*.html"):
        for target in re.findall(r'(?:href|src)="([^"#:]+)', page.read_text()):
            expect((page.parent / target).exists(), f"{page.relative_to(root)} leads to {target}")


def check_with(tool, *arguments, known=None):
    """What the tool says of the files, but for a known warning; skipped, and said, without the tool."""
    if shutil.which(tool) is None:
        print(f"{tool} is not installed")
        return
    run = subprocess.run((tool, *arguments), capture_output=True, text=True)
    said = run.stdout + run.stderr
    found = re.findall(r"^[EW]: .*", said, re.MULTILINE)
    only_known = bool(known and found) and all(known in line for line in found)
    expect(run.returncode == 0 or only_known, f"{tool} ended with {run.returncode}:\n{said}")


def main():
    package = sys.argv[1]
    with tempfile.TemporaryDirectory() as folder:
        root = pathlib.Path(folder)
        subprocess.run(("dpkg-deb", "--raw-extract", package, folder), check=True)
        check_version(root, check_fields(package))
        check_files(package, root)
        check_licence(root)
        check_binaries(root)
        check_links(root)
        check_with("desktop-file-validate", "--warn-kde", str(root / DESKTOP))
        # The program has no page on the Internet; lintian of Debian 13 says so once more.
        check_with("appstreamcli", "validate", "--no-net", "--no-color", str(root / METAINFO),
                   known="url-homepage-missing")
    check_with("lintian", "--allow-root", "--fail-on", "error,warning", package,
               known='appstream-metadata-validation-failed Problems reported by "appstreamcli')
    for fault in faults:
        print(f"{package}: {fault}")
    if faults:
        sys.exit(1)
    print(f"{package}: as it must be")


main()
