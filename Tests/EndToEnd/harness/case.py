"""Base classes of the tests: a desktop for each class, a home and a clock for each test, and a tally by hand."""

import collections
import sys
import unittest

from .clock import FakedClock
from .desktop import Desktop
from .program import Program
from .terminal import Terminal


class DesktopTest(unittest.TestCase):
    """Gives each test a program of its own on the class's desktop, and prints a report when the test fails."""

    host = "watcher"
    desktop: Desktop

    @classmethod
    def setUpClass(cls):
        cls.desktop = Desktop(cls.host)
        cls.addClassCleanup(cls.desktop.end)

    def setUp(self):
        self.clock = FakedClock(self.desktop.folder / f"{self._testMethodName}.clock")
        self.clock.set("2026-03-10 13:59:40")
        self.program = Program(self.desktop, self._testMethodName, self.clock)
        self.addCleanup(self.program.end)

    def doCleanups(self):
        # Printed before the folders with the log are deleted.
        if self._outcome and not self._outcome.success and hasattr(self, "program"):
            print(f"\n=== {self.id()}\n{self.program.report()}", file=sys.stderr)
        return super().doCleanups()


class TerminalTest(DesktopTest):
    """A person who types in a terminal."""

    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        cls.terminal = Terminal(cls.desktop)

    def type(self, count):
        """Types in the terminal and waits until the presses are counted."""
        before = self.program.counted()
        self.terminal.focus()
        self.desktop.type(letters(count))
        self.program.expect_count(before + count)


class Ledger:
    """The counts as an observer would have written them down."""

    def __init__(self):
        self._presses = collections.Counter()
        self._names = {}

    def add(self, count, day, hour, application=None):
        """Adds `count` presses; without an application where Fernhollow's own window had the keyboard."""
        self._presses[day, hour, application and application.identifier] += count
        if application and count:
            self._names[application.identifier] = application.name

    def on(self, day):
        return sum(count for (other, _, _), count in self._presses.items() if other == day)

    def tables(self):
        """The expected tables."""
        daily, hourly, applications = collections.Counter(), collections.Counter(), {}
        for (day, hour, application), count in self._presses.items():
            if count:
                daily[day] += count
                hourly[day, hour] += count
                if application:
                    applications[day, hour, application] = count
        return {
            "daily": dict(daily),
            "hourly": dict(hourly),
            "applications": applications,
            "registry": self._names,
        }


def letters(count):
    """`count` letters, for typing."""
    return ("packmyboxwithfivedozenliquorjugs" * (count // 32 + 1))[:count]
