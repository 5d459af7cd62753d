"""When a database cannot be used, the program says so in its log, goes on counting and damages nothing."""

import contextlib
import os
import sqlite3
import subprocess
import sys
import time
import unittest

from harness import processes
from harness.case import TerminalTest
from harness.waiting import wait_until

ADDRESS = "hedy@example.org"
DAY = "2026-03-10"

# The program writes the day's presses every 15 seconds, so in this time it is sure to meet a lock.
FLUSH = 16


class StorageTrouble(TerminalTest):
    def setUp(self):
        """A person who signed in earlier and has counts."""
        super().setUp()
        self.program.start()
        self.program.sign_in(ADDRESS)
        self.began_with = self.program.first_count()
        self.type(10)
        self.program.quit()
        self.database = self.program.database(ADDRESS)
        # No count may be in the write-ahead log: the file alone has to contain them.
        with contextlib.closing(sqlite3.connect(self.database)) as database:
            self.assertEqual(database.execute("PRAGMA wal_checkpoint(TRUNCATE)").fetchone(), (0, 0, 0))

    def test_a_file_that_is_no_database_is_set_aside(self):
        text = b"these are not the tables you are looking for\n" * 200
        self.database.write_bytes(text)
        self.program.start()
        self.type(30)
        self.assertEqual(self.program.quit(), 0)
        self.assertEqual(self.program.tables(ADDRESS)["daily"], {DAY: 30})
        (aside,) = self.database.parent.glob("*.unreadable-*")
        self.assertEqual(aside.read_bytes(), text)
        self.assertIn(aside.name, self.program.log())

    def test_a_data_folder_without_permission_to_write(self):
        if os.geteuid() == 0:
            # Root ignores permissions, so the program runs without that capability.
            self.program.prefix = [
                "setpriv",
                "--inh-caps=-dac_override,-dac_read_search",
                "--bounding-set=-dac_override,-dac_read_search",
            ]
        folder = self.database.parent
        self.database.chmod(0o400)
        folder.chmod(0o500)
        self.addCleanup(folder.chmod, 0o700)
        contents, logged = self.database.read_bytes(), len(self.program.log())
        self.program.start()
        self.type(30)
        self.assertIn(self.database.name, self.program.log()[logged:])
        self.assertEqual(self.program.quit(), 0)
        self.assertEqual(self.database.read_bytes(), contents)

    def lock(self, *statements):
        """Another process that holds a lock on the database until it is ended. It has to be another
        one: a process that reads the file by other means loses its locks on it."""
        script = (
            "import sqlite3, sys, time\n"
            "database = sqlite3.connect(sys.argv[1], isolation_level=None)\n"
            "for statement in sys.argv[2:]: database.execute(statement)\n"
            "print('locked', flush=True)\n"
            "time.sleep(600)\n"
        )
        command = [sys.executable, "-c", script, str(self.database), *statements]
        holder = self.desktop.spawn(command, stdout=subprocess.PIPE, text=True)
        self.assertEqual(holder.stdout.readline(), "locked\n")
        return holder

    def test_a_lock_at_the_start_or_while_it_runs_loses_nothing(self):
        exclusively = ("PRAGMA locking_mode=EXCLUSIVE", "BEGIN EXCLUSIVE")
        expected = self.began_with + 10
        for lock, is_at_start in (exclusively, True), (("BEGIN IMMEDIATE",), False):
            with self.subTest(lock=lock):
                if is_at_start:
                    holder = self.lock(*lock)
                    self.program.start()
                else:
                    self.program.start()
                    self.program.expect_count(expected)
                    holder = self.lock(*lock)
                self.type(20)
                time.sleep(FLUSH)
                self.assertIn("not being saved", self.program.note())
                processes.end(holder)
                wait_until(lambda: not self.program.note(), "counts being saved again", 2 * FLUSH)
                self.program.expect_count(expected + 20)  # including the counts stored before the start
                self.type(5)
                self.program.quit()
                expected += 25
                self.assertEqual(self.program.tables(ADDRESS)["daily"], {DAY: expected})
                self.assertEqual(self.hours(), expected)

    def hours(self):
        with contextlib.closing(sqlite3.connect(self.database)) as database:
            return database.execute("SELECT SUM(count) FROM hourly_counts").fetchone()[0]


if __name__ == "__main__":
    unittest.main()
