"""The windows with a month of counts: opening every day by its bar, typing, searching."""

import contextlib
import datetime
import sqlite3
import unittest

from harness.terminal import Terminal
from harness.case import DesktopTest, letters
from harness.waiting import wait_until

ANA = "ana@example.com"
LAST = "2026-03-10"


class History:
    """Counts of the last 20 days, all different, in one application."""

    def __init__(self):
        last = datetime.date.fromisoformat(LAST)
        self.days = {str(last - datetime.timedelta(days=age)): 1000 + 111 * age for age in range(20)}

    def fill(self, file):
        with contextlib.closing(sqlite3.connect(file)) as database, database:
            for day, count in self.days.items():
                database.execute("INSERT INTO daily_counts VALUES (?, ?, 1)", (day, count))
                database.execute("INSERT INTO hourly_counts VALUES (?, 9, ?, 1)", (day, count))
                database.execute("INSERT INTO app_hour_counts VALUES (?, 9, 'org.example.code', ?, 1)", (day, count))


class Dashboard(DesktopTest):
    def setUp(self):
        super().setUp()
        self.history = History()
        self.program.prepare(ANA, self.history)
        self.program.start()
        self.window = self.program.open_window()
        self.desktop.focus(self.window)
        self.accessible = self.program.accessible()
        self.expect_shown(f"{self.history.days[LAST]:,}")

    def expect_shown(self, text):
        wait_until(lambda: text in self.accessible.texts(), f"{text!r} in the window", 60)

    def days(self):
        """The bars of the 15 days, oldest first."""
        buttons = self.accessible.shown("push button")
        return [node for node in buttons if node.name.endswith("key presses")]

    def expect_days(self):
        """Waits until each bar's name has the count of its day."""
        totals = self.history.days
        last = datetime.date.fromisoformat(LAST)
        expected = []
        for age in reversed(range(15)):
            day = last - datetime.timedelta(days=age)
            count = totals.get(day.isoformat(), 0)
            expected.append(f"{day:%A, %B} {day.day}, {day.year}, {count:,} key presses")
        wait_until(lambda: [day.name for day in self.days()] == expected, f"the days {expected}", 60)

    def test_a_click_on_a_bar_opens_its_day_in_any_width(self):
        self.expect_days()
        for width in (420, 1000):
            self.desktop.run("xdotool", "windowsize", "--sync", self.window, width, 850)
            for age, day in enumerate(reversed(self.days())):
                self.desktop.focus(self.window)
                self.desktop.click(*self.accessible.centre(day))
                date = datetime.date.fromisoformat(LAST) - datetime.timedelta(days=age)
                title = f"Day Details - {date:%b} {date.day}, {date.year}"
                wait_until(lambda title=title: self.desktop.window_titled(title), title)
                total = self.history.days.get(date.isoformat(), 0)
                self.expect_shown(f"{total:,}")
        self.desktop.press("Escape")
        wait_until(lambda: not self.desktop.window_titled("Day Details.*"), "the end of the day's window")

    def test_follows_typing_and_searches(self):
        terminal = Terminal(self.desktop)
        terminal.focus()
        before = self.history.days[LAST]
        text = letters(120)
        self.desktop.type(text, 20)
        self.expect_shown(f"{before + len(text):,}")
        self.program.expect_count(before + len(text))
        self.program.click("text")  # the list has no room for an application with so few presses
        self.desktop.type("XTE", 30)
        rows = lambda: [node.name for node in self.accessible.shown("list item")]
        wait_until(lambda: rows() == [f"{terminal.name}, {len(text)} key presses"], "the row searched for")
        self.desktop.type("?", 30)
        wait_until(lambda: rows() == [], "no row")


if __name__ == "__main__":
    unittest.main()
