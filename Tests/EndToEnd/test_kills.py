"""When the program is killed at any moment and started again, it keeps its counts."""

import contextlib
import os
import random
import sqlite3
import sys
import time
import unittest

from harness.case import TerminalTest
from harness.waiting import wait_for_value

ADDRESS = "kathleen@example.org"

KILLS = int(os.environ.get("FERNHOLLOW_KILLS", "12"))
PER_SECOND = 300
# The program writes the day's presses every 15 seconds. One run in so many lasts until just that moment.
FLUSH = 15
LIVES_PER_FLUSH = 12
LIVES_PER_DEATH_AT_THE_START = 4


class Kills(TerminalTest):
    def setUp(self):
        super().setUp()
        self.program.prepare(ADDRESS)
        self.terminal.focus()
        self.typed = self.unseen = 0
        self.typist = self.desktop.start_typist()

    def type_for(self, seconds):
        """Types at the rate, in the window that has the keyboard, and ends at a random moment between two presses."""
        now = time.monotonic()
        end, due = now + seconds, now
        while due < end:
            time.sleep(max(0, due - time.monotonic()))
            self.typist.stdin.write(b"key --delay 0 a\n")
            self.typed += 1
            due = max(due + 1 / PER_SECOND, time.monotonic())
        time.sleep(max(0, end - time.monotonic()))

    def live(self, number):
        """One run of the program, until it is killed."""
        if number % LIVES_PER_DEATH_AT_THE_START == 1:
            self.program.launch()
            time.sleep(random.uniform(0, 0.5))
        else:
            self.program.start()
            is_at_flush = number % LIVES_PER_FLUSH == 0
            self.type_for(FLUSH + random.uniform(-0.1, 0.1) if is_at_flush else random.uniform(0, 1.5))
        self.program.process.kill()
        self.unseen += self.typed - self.terminal.received()
        self.program.process.wait()
        wait_for_value(self.terminal.received, self.typed, "presses that the terminal received")

    def sums(self):
        """The presses of the day in each table."""
        tables = self.program.tables(ADDRESS)
        return {name: sum(tables[name].values()) for name in ("daily", "hourly", "applications")}

    def test_a_kill_costs_the_press_in_flight_and_a_second_of_applications(self):
        for number in range(KILLS):
            self.live(number)
        killed = self.sums()
        self.program.start()
        hours = self.sums()["hourly"]
        print(
            f"{KILLS} kills, {self.typed} presses, {self.unseen} of them under way; "
            f"left behind {killed}, then {self.sums()}",
            file=sys.stderr,
        )

        # With each kill one press may be lost in handling, besides those that had not reached the terminal.
        self.assertGreaterEqual(hours, self.typed - self.unseen - KILLS)
        self.assertLessEqual(hours, self.typed)
        self.assertEqual(self.sums()["daily"], hours)
        self.assertLessEqual(self.sums()["applications"], hours)
        self.assertGreaterEqual(self.sums()["applications"], hours - KILLS * PER_SECOND)
        self.program.expect_count(hours)
        self.assertEqual(self.program.quit(), 0)
        self.assertEqual(self.sums()["daily"], hours)
        with contextlib.closing(sqlite3.connect(self.program.database(ADDRESS))) as database:
            self.assertEqual(database.execute("PRAGMA integrity_check").fetchall(), [("ok",)])


if __name__ == "__main__":
    unittest.main()
