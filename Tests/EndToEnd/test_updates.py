"""A release in one file finds, downloads and becomes the next one, and accepts no other file."""

import os
import pathlib
import shutil
import signal
import unittest

from harness.accessibility import AccessibleProgram
from harness.case import TerminalTest
from harness.program import PATIENCE, Program
from harness.updates import Maker, Site
from harness.waiting import wait_until

ADDRESS = "hedy@example.org"
NOTES = "Counts even better.\n<b>No</b> tags & no links."
PACKAGE = "Fernhollow-0.2.0.AppImage"
STARTED = "[KeyboardMonitor] Started successfully"


class Updates(TerminalTest):
    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        cls.site = Site(cls.desktop.folder / "site")
        cls.addClassCleanup(cls.site.end)
        cls.maker = Maker(cls.desktop.folder / "maker", cls.site)
        # Large enough to be interrupted in the middle of a download.
        cls.old, cls.new = cls.maker.package("0.1.0"), cls.maker.package("0.2.0", 24_000_000)
        cls.maker.publish("0.2.0", cls.new, NOTES)

    def setUp(self):
        super().setUp()
        self.site.behave()
        applications = self.desktop.folder / f"applications-{self._testMethodName}"
        applications.mkdir()
        self.installed = applications / "Fernhollow.AppImage"
        shutil.copy(self.old, self.installed)
        self.old_inode = self.installed.stat().st_ino
        self.program = Program(
            self.desktop, "home-of-" + self._testMethodName, self.clock, str(self.installed)
        )
        self.addCleanup(self.end_successors)
        self.addCleanup(self.program.end)
        # The folder into which the files unpack themselves.
        unpacked = self.program.home / "tmp"
        unpacked.mkdir()
        self.program.changes["TMPDIR"] = str(unpacked)
        self.program.prepare(ADDRESS)

    # What a person does

    def begin(self):
        self.program.start()
        self.desktop.focus(self.program.open_window())
        self.accessible = self.program.accessible()

    def check(self, status="v0.1.0"):
        self.program.click("push button", status)

    def expect_button(self, name, seconds=PATIENCE):
        wait_until(lambda: self.accessible.shown("push button", name), f"a button {name!r}", seconds)

    def install(self):
        """Goes up to the verified download."""
        self.check()
        self.expect_button("Install Update")
        self.program.click("push button", "Install Update")
        self.expect_button("Install and Relaunch")

    # What is to be seen afterwards

    def expect_successor(self, starts):
        """Waits for the new program, which the old one started, not the test."""
        self.assertEqual(self.program.wait(), 0)
        wait_until(lambda: self.program.log().count(STARTED) == starts, "the new program counting", PATIENCE)
        item = wait_until(self.program._item, "its status item", PATIENCE)
        bus = "org.freedesktop.DBus"
        (successor,) = self.program._ask(
            bus, "/org/freedesktop/DBus", bus, "GetConnectionUnixProcessID", "(s)", (item[0],)
        )
        self.accessible = AccessibleProgram(self.desktop, successor)
        self.desktop.focus(self.program.open_window())
        self.expect_button("v0.2.0")
        self.assertEqual(self.installed.read_bytes(), self.new.read_bytes())

    def expect_old_and_nothing_else(self):
        self.assertEqual(self.installed.read_bytes(), self.old.read_bytes())
        self.assertEqual([file.name for file in self.installed.parent.iterdir()], [self.installed.name])
        self.expect_no_download()

    def expect_no_download(self):
        """No part of a package is in the home, apart from the programs that are unpacked there."""
        unpacked = self.program.home / "tmp"
        found = [
            file
            for file in self.program.home.rglob("*")
            if unpacked not in file.parents and file.is_file() and file.read_bytes()[:9] == b"#!/bin/sh"
        ]
        self.assertEqual(found, [])

    def end_successors(self):
        """Ends the programs that the program started at its end, and waits until they have deleted their files."""
        wait_until(self.no_successor, "the end of all programs and of what they unpacked", PATIENCE)

    def no_successor(self):
        unpacked = os.fsencode(self.program.home / "tmp")
        quiet = not os.listdir(unpacked)
        for line in pathlib.Path("/proc").glob("[0-9]*/cmdline"):
            try:
                command = line.read_bytes()
                if command.startswith(unpacked):
                    os.kill(int(line.parent.name), signal.SIGKILL)
            except (FileNotFoundError, ProcessLookupError):
                continue  # it ended by itself
            # A script that still deletes its files or is about to start.
            quiet = quiet and not command.startswith(unpacked) and os.fsencode(self.installed) not in command
        return quiet

    # The tests

    def test_becomes_the_next_release_and_loses_no_press(self):
        self.begin()
        before = self.program.counted()
        self.type(30)
        self.check()
        self.expect_button("Install Update")
        self.assertIn("Counts even better.", "\n".join(self.accessible.texts()))
        self.assertIn("<b>No</b> tags & no links.", "\n".join(self.accessible.texts()))
        self.program.click("push button", "Install Update")
        self.expect_button("Install and Relaunch")
        self.assertEqual(self.installed.read_bytes(), self.old.read_bytes(), "nothing before the person says so")
        self.program.click("push button", "Install and Relaunch")
        self.expect_successor(starts=2)
        self.program.expect_count(before + 30)
        self.assertEqual([file.name for file in self.installed.parent.iterdir()], [self.installed.name])
        self.expect_no_download()
        wait_until(
            lambda: len(list((self.program.home / "tmp").iterdir())) == 1, "the old program cleared away"
        )

    def test_takes_nothing_that_its_maker_did_not_sign(self):
        package = (self.site.folder / PACKAGE).read_bytes()
        feed = (self.site.folder / "appcast.xml").read_bytes()
        tampered = package[:-1] + bytes([package[-1] ^ 1])
        relabelled = feed.replace(b'version="0.2.0"', b'version="0.3.0"')
        for name, altered, is_offered in (
            ("another package", {PACKAGE: tampered}, True),
            ("an old package as a new one", {"appcast.xml": relabelled}, False),
        ):
            with self.subTest(name):
                self.assertNotIn(altered, ({PACKAGE: package}, {"appcast.xml": feed}))
                self.site.behave()
                self.site.altered = altered
                self.begin()
                self.check()
                if is_offered:
                    self.expect_button("Install Update")
                    self.program.click("push button", "Install Update")
                self.expect_button("Error")
                self.expect_old_and_nothing_else()
                self.assertEqual(PACKAGE in self.site.requests, is_offered)
                self.program.quit()

    def test_a_kill_in_the_middle_of_the_installation_leaves_a_program_that_starts(self):
        self.begin()
        self.install()
        self.program.click("push button", "Install and Relaunch")
        # Whenever this kill comes, the file is the old or the new one.
        folder = self.installed.parent
        wait_until(lambda: len(os.listdir(folder)) > 1 or self.is_new(), "a new file", pause=0.0005)
        os.kill(self.program.process.pid, signal.SIGKILL)
        self.program.wait()
        self.assertIn(self.installed.read_bytes(), (self.old.read_bytes(), self.new.read_bytes()))
        version = self.program.command("--version").stdout.strip()
        self.assertEqual(version, "Fernhollow " + ("0.2.0" if self.is_new() else "0.1.0"))
        if not self.is_new():
            self.begin()
            self.install()
            self.program.click("push button", "Install and Relaunch")
            self.expect_successor(starts=3)
        self.assertEqual(os.listdir(folder), [self.installed.name], "nothing left of the first attempt")

    def is_new(self):
        return self.installed.stat().st_ino != self.old_inode


if __name__ == "__main__":
    unittest.main()
