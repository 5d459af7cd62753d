"""What Packaging/ makes of this build, opened again."""

import os
import pathlib
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
        self.assertEqual(pathlib.Path(file).name.split("_")[:2], ["fernhollow", version])
        self.assertEqual(self.run_quietly("dpkg-deb", "--field", file, "Version").strip(), version)
        depends = self.run_quietly("dpkg-deb", "--field", file, "Depends")
        for library in ("libc6 ", "libqt6widgets6 ", "libsqlite3-0 ", "libxcb-record0", "qt6-qpa-plugins"):
            self.assertIn(library, depends)
        program = root / "usr/lib/fernhollow/fernhollow"
        self.assertEqual((root / "usr/bin/fernhollow").resolve(), program.resolve())
        # The installed files as dpkg will list them, by which the program knows that it is one of them.
        self.assertIn("./usr/lib/fernhollow/fernhollow\n", self.run_quietly("dpkg-deb", "--contents", file))
        self.run_quietly("md5sum", "--check", "--quiet", self.sums(file, root))

    def sums(self, file, root):
        """The package's list of sums, with the names of the unpacked files."""
        lines = self.run_quietly("dpkg-deb", "--info", file, "md5sums").splitlines()
        self.assertGreater(len(lines), 3)
        listed = self.folder / "md5sums"
        listed.write_text("".join(f"{line[:34]}{root}/{line[34:]}\n" for line in lines))
        return listed

    def test_one_file_unpacks_runs_and_clears_away(self):
        self.package("appdir", BUILD, self.folder / "AppDir")
        libraries = self.folder / "AppDir/usr/lib/fernhollow/lib"
        names = {file.name.split(".")[0] for file in libraries.iterdir()}
        self.assertLessEqual({"libQt6Widgets", "libQt6XcbQpa", "libicuuc", "libsqlite3"}, names)
        self.assertEqual(names & {"libc", "libX11", "libGL", "ld-linux-x86-64"}, set())
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
