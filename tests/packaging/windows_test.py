# SPDX-License-Identifier: GPL-3.0-or-later
"""What packaging/windows makes of the files that it ships: the list of libraries with their licences,
the list that the installer checks and removes by, the manifest, and signatures."""

import hashlib
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import unittest

SOURCES = pathlib.Path(__file__).resolve().parents[2]
TOOLS = SOURCES / "packaging/windows"
COMPILER = "x86_64-w64-mingw32-gcc-posix"


def run(*command, **more):
    return subprocess.run([str(word) for word in command], capture_output=True, text=True, **more)


def table():
    """The lines of libraries.txt, as fields."""
    for line in (TOOLS / "libraries.txt").read_text("utf-8").splitlines():
        if line and not line.startswith("#"):
            yield [field.strip() for field in line.split("|")]


class Windows(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.root = pathlib.Path(folder.name)
        self.ship = self.root / "davo"
        self.versions = []
        for files, _, package, _, _, texts in table():
            for file in [] if files.startswith("(") else files.split():
                self.write(file, file)
            for file in texts.split():
                self.write("licences/" + file, file)
            if package != "-":
                self.versions.append(f"{package}=1.2-{len(self.versions)}")

    def write(self, name, text):
        path = self.ship / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(text)

    def list_libraries(self):
        return run(TOOLS / "list-libraries", self.ship, "9.8.7", *self.versions)

    def test_every_library_has_version_licence_and_source(self):
        ran = self.list_libraries()
        self.assertEqual(ran.returncode, 0, ran.stderr)
        text = (self.ship / "licences/contents.txt").read_text("utf-8")
        for file in self.ship.rglob("*"):
            if file.suffix in (".dll", ".exe"):
                self.assertIn(file.relative_to(self.ship).as_posix(), text)
        for pair in self.versions:
            self.assertIn(f"  Version:  {pair.partition('=')[2]}\n", text)
        self.assertIn("  Version:  9.8.7\n", text)
        self.assertEqual(text.count("  Licence:  "), len(list(table())))
        self.assertEqual(text.count("  Source:   "), len(list(table())))
        self.assertIn("davo-9.8.7-source.tar.gz", text)

    def test_a_library_without_an_entry_is_a_fault(self):
        self.write("sqldrivers/stranger.dll", "x")
        ran = self.list_libraries()
        self.assertEqual(ran.returncode, 1)
        self.assertEqual(ran.stderr, "sqldrivers/stranger.dll has no line in libraries.txt\n")

    def test_so_is_an_entry_without_its_library_its_licence_or_its_version(self):
        (self.ship / "zlib1.dll").unlink()
        (self.ship / "licences/zlib.txt").unlink()
        self.versions = [pair for pair in self.versions if not pair.startswith("qt6-base-dev=")]
        said = self.list_libraries().stderr
        self.assertIn("zlib: zlib1.dll is not there\n", said)
        self.assertIn("zlib: licences/zlib.txt is not there\n", said)
        self.assertIn("no version of qt6-base-dev\n", said)

    def test_what_the_build_ships_has_an_entry(self):
        """The names that cmake/WindowsProgram.cmake installs are those of the table."""
        script = (SOURCES / "cmake/WindowsProgram.cmake").read_text("utf-8")
        found = set(re.findall(r"[\w/+-]+\.dll", script))
        found = {name for name in found if not name.endswith(("Qt6Test.dll", "qoffscreen.dll"))}
        names = re.search(r"foreach\(name (Qt6Core[^)]*)\)", script)[1].split()
        found |= {name + ".dll" for name in names}
        named = {file for fields in table() for file in fields[0].split() if file.endswith(".dll")}
        self.assertEqual(found, named)

    def test_the_installer_checks_and_removes_what_is_there_and_nothing_else(self):
        self.write("guide/pictures/one.png", "x")
        script = self.root / "files.nsh"
        self.assertEqual(run(TOOLS / "list-files", self.ship, script).returncode, 0)
        checked = run("sha256sum", "--strict", "-c", "files.sha256", cwd=self.ship)
        self.assertEqual(checked.returncode, 0, checked.stdout)
        each = dict(re.findall(r'!insertmacro \$\{DO\} "(.*)" "([0-9a-f]{64})"', script.read_text()))
        there = {str(file.relative_to(self.ship)).replace("/", "\\"):
                 hashlib.sha256(file.read_bytes()).hexdigest()
                 for file in self.ship.rglob("*") if file.is_file()}
        self.assertEqual(each, there)
        folders = re.findall(r'!insertmacro \$\{DO\} "([^"]*)"\n', script.read_text())
        self.assertEqual(folders, ["guide\\pictures", "guide", "imageformats", "licences",
                                   "platforms", "styles"])

    def test_a_file_without_anything_in_it_ends_the_build(self):
        self.write("empty.txt", "")
        ran = run(TOOLS / "list-files", self.ship, self.root / "files.nsh")
        self.assertEqual((ran.returncode, ran.stderr), (1, "empty files: ['empty.txt']\n"))

    def test_the_icon_has_a_picture_for_each_scale(self):
        icon = (SOURCES / "src/app/icon/davo.ico").read_bytes()
        self.assertEqual(icon[:4], bytes((0, 0, 1, 0)))
        sizes = []
        for entry in range(int.from_bytes(icon[4:6], "little")):
            at = 6 + 16 * entry
            begin = int.from_bytes(icon[at + 12:at + 16], "little")
            self.assertEqual(icon[begin + 1:begin + 4], b"PNG")
            wide, high = (int.from_bytes(icon[begin + n:begin + n + 4], "big") for n in (16, 20))
            self.assertEqual((wide, high), (icon[at] or 256, icon[at + 1] or 256))
            sizes.append(wide)
        # 16 and 32 at 100, 125, 150, 200 and 250 %.
        self.assertLessEqual({16, 20, 24, 32, 40, 48, 64, 80}, set(sizes))

    def test_the_manifest_names_the_installer_and_its_exit_codes(self):
        setup = self.root / "setup.exe"
        setup.write_bytes(b"MZ")
        run(TOOLS / "write-manifest", setup, "9.8.7", "https://download.invalid/setup.exe",
            self.root / "winget", check=True)
        files = {path.name: path.read_text() for path in (self.root / "winget").iterdir()}
        self.assertEqual(sorted(files), ["DAVO.PCInterface.installer.yaml",
                                         "DAVO.PCInterface.locale.en-US.yaml", "DAVO.PCInterface.yaml"])
        for text in files.values():
            self.assertIn("PackageIdentifier: DAVO.PCInterface\nPackageVersion: 9.8.7\n", text)
            self.assertRegex(text, r"ManifestVersion: \d+\.\d+\.0\n\Z")
        text = files["DAVO.PCInterface.installer.yaml"]
        self.assertIn("  InstallerUrl: https://download.invalid/setup.exe\n", text)
        self.assertIn(f"  InstallerSha256: {hashlib.sha256(b'MZ').hexdigest().upper()}\n", text)
        # What the installer itself says: who made it, its name there, how it ends.
        script = (TOOLS / "installer.nsi").read_text("utf-8")
        self.assertIn(f"- InstallerReturnCode: {re.search('define RUNNING (.*)', script)[1]}\n"
                      "  ReturnResponse: packageInUse\n", text)
        self.assertIn(f"- InstallerReturnCode: {re.search('define DAMAGED (.*)', script)[1]}\n", text)
        self.assertIn(f"  Publisher: {re.search('define PUBLISHER .(.*).', script)[1]}\n", text)
        key = re.search(r'define UNINSTALL .*\\(.*)"', script)[1]
        self.assertIn(f"  ProductCode: {key}\n", text)

    def test_without_a_certificate_nothing_is_signed(self):
        ran = run(TOOLS / "sign", self.ship / "davo.exe", env={"PATH": "/usr/bin:/bin"})
        self.assertEqual((ran.returncode, ran.stdout), (0, ""))
        self.assertEqual((self.ship / "davo.exe").read_text(), "davo.exe")

    @unittest.skipUnless(shutil.which("osslsigncode") and shutil.which("openssl") and
                         shutil.which(COMPILER), f"no osslsigncode, openssl or {COMPILER}")
    def test_with_a_certificate_a_program_is_signed_and_a_changed_one_is_noticed(self):
        key, certificate, both = (self.root / name for name in ("key.pem", "certificate.pem", "both.p12"))
        run("openssl", "req", "-x509", "-newkey", "rsa:2048", "-nodes", "-days", "2", "-subj",
            "/CN=DAVO maintainers", "-addext", "extendedKeyUsage=codeSigning", "-keyout", key,
            "-out", certificate, check=True)
        password = self.root / "password"
        password.write_text("made on the spot")
        run("openssl", "pkcs12", "-export", "-inkey", key, "-in", certificate, "-out", both,
            "-passout", f"file:{password}", check=True)
        source, program = self.root / "one.c", self.root / "one.exe"
        source.write_text("int main(void) { return 0; }\n")
        run(COMPILER, source, "-o", program, check=True)

        def verify():
            return run("osslsigncode", "verify", "-CAfile", certificate, "-in", program)

        self.assertNotEqual(verify().returncode, 0)
        ran = run(TOOLS / "sign", program, env={
            "PATH": "/usr/bin:/bin", "DAVO_SIGN_CERTIFICATE": str(both),
            "DAVO_SIGN_PASSWORD_FILE": str(password)})
        self.assertEqual((ran.returncode, ran.stdout), (0, "signed: one.exe\n"), ran.stderr)
        self.assertEqual(verify().returncode, 0, verify().stdout)
        content = bytearray(program.read_bytes())
        content[len(content) // 4] ^= 1
        program.write_bytes(content)
        self.assertNotEqual(verify().returncode, 0)


if __name__ == "__main__":
    sys.exit(unittest.main())
