"""What Packaging/ makes of this build, opened again."""

import gzip
import os
import pathlib
import re
import subprocess
import tempfile
import unittest

TOP = pathlib.Path(__file__).resolve().parents[2]
BUILD = os.environ["FERNHOLLOW_BUILD"]


class Packages(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory(prefix="fernhollow-packages-")
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)
        self.environment = {"PATH": "/usr/bin:/bin", "HOME": folder.name, "TMPDIR": folder.name, "LANG": "C.UTF-8"}

    def run_quietly(self, *command):
        done = subprocess.run(
            command, env=self.environment, cwd=self.folder, capture_output=True, text=True, timeout=120
        )
        self.assertEqual(done.returncode, 0, done.stderr)
        return done.stdout

    def package(self, script, *arguments):
        return self.run_quietly(TOP / "Packaging" / script, *arguments)

    def test_the_debian_package_holds_the_program_and_asks_for_its_libraries(self):
        file = self.package("deb", BUILD, self.folder).strip()
        root = self.folder / "root"
        self.run_quietly("dpkg-deb", "--extract", file, root)
        version = self.run_quietly(root / "usr/bin/fernhollow", "--version").split()[1]
        self.assertRegex(pathlib.Path(file).name, rf"^fernhollow_{version}-1~deb\w+_")
        depends = self.run_quietly("dpkg-deb", "--field", file, "Depends")
        for library in ("libc6 ", "libqt6widgets6 ", "libsqlite3-0 ", "libsystemd0 ", "libxcb-record0", "qt6-qpa-plugins"):
            self.assertIn(library, depends)
        program = root / "usr/lib/fernhollow/fernhollow"
        self.assertEqual((root / "usr/bin/fernhollow").resolve(), program.resolve())
        # The installed files as dpkg will list them, by which the program knows that it is one of them.
        self.assertIn("./usr/lib/fernhollow/fernhollow\n", self.run_quietly("dpkg-deb", "--contents", file))
        options = set(re.findall(r"--[a-z]+", self.run_quietly(root / "usr/bin/fernhollow", "--help")))
        for described in ("share/man/man1/fernhollow.1.gz", "share/bash-completion/completions/fernhollow"):
            data = (root / "usr" / described).read_bytes()
            text = (gzip.decompress(data) if described.endswith(".gz") else data).decode().replace("\\-", "-")
            self.assertEqual(set(re.findall(r"--[a-z]+", text)), options, described)
        self.assert_the_service_is_complete(root)

    def assert_the_service_is_complete(self, root):
        """Each file of the key-blind service that another one of the package names is there."""
        named = set()
        for file in ("lib/systemd/system/fernhollow-keytap.service", "lib/systemd/system/fernhollow-keytap.socket",
                     "share/polkit-1/actions/app.fernhollow.keytap.policy"):
            named |= set(re.findall(r"/usr/(?:share/doc|lib)/fernhollow/[\w.-]+", (root / "usr" / file).read_text()))
        self.assertEqual(len(named), 3)
        user = re.search(r"^User=(.+)$", (root / "usr/lib/systemd/system/fernhollow-keytap.service").read_text(), re.M)
        self.assertIn(f"\nu {user[1]} ", (root / "usr/lib/sysusers.d/fernhollow.conf").read_text())
        for file in named:
            self.assertTrue((root / file[1:]).is_file(), file)

    def test_a_large_log_is_put_aside_and_four_old_ones_are_kept(self):
        log = self.folder / "fernhollow_debug.log"
        for number in range(7):
            log.write_text(f"{number}" * 1100000)
            self.run_quietly("sh", TOP / "Packaging/desktop/rotate-log")
        log.write_text("short")
        self.run_quietly("sh", TOP / "Packaging/desktop/rotate-log")
        kept = {file.name.removeprefix(log.name): file.read_bytes() for file in self.folder.iterdir()}
        first = {name: (gzip.decompress(data) if name.endswith(".gz") else data)[:1] for name, data in kept.items()}
        self.assertEqual(first, {"": b"s", ".1": b"6", ".2.gz": b"5", ".3.gz": b"4", ".4.gz": b"3"})

    def test_one_file_unpacks_runs_and_clears_away(self):
        self.package("appdir", BUILD, self.folder / "AppDir")
        libraries = self.folder / "AppDir/usr/lib/fernhollow/lib"
        names = {file.name.split(".")[0] for file in libraries.iterdir()}
        self.assertLessEqual({"libQt6Widgets", "libQt6XcbQpa", "libicuuc", "libsqlite3"}, names)
        self.assertEqual(names & {"libc", "libX11", "libGL", "ld-linux-x86-64"}, set())
        licences = {file.parent.name for file in (self.folder / "AppDir/usr/share/doc").glob("*/copyright")}
        self.assertLessEqual({"libqt6widgets6", "libsqlite3-0"}, licences)
        file = self.folder / "Fernhollow.AppImage"
        self.package("appimage", "--self-extracting", self.folder / "AppDir", file)
        self.assertRegex(self.run_quietly(file, "--version"), r"^Fernhollow \d+\.\d+\.\d+\n$")
        self.assertRegex(self.run_quietly("sh", "-c", f"ln -s '{file}' link && ./link --version"), "^Fernhollow ")

    def test_what_is_not_there_is_not_packed(self):
        for command in (("appimage", self.folder, "F"), ("appdir", BUILD), ("deb", self.folder / "missing")):
            done = subprocess.run([TOP / "Packaging" / command[0], *command[1:]], capture_output=True, timeout=60)
            self.assertNotEqual(done.returncode, 0, command)
            self.assertIn(b"fernhollow: ", done.stderr, command)


if __name__ == "__main__":
    unittest.main()
