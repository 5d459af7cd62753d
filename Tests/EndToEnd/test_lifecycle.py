"""Only one program runs at a time, and it loses no pending count, however it ends."""

import signal
import time
import unittest

from harness import processes
from harness.terminal import Terminal
from harness.case import TerminalTest, letters
from harness.desktop import Desktop
from harness.program import PATIENCE, Program
from harness.waiting import wait_until

ADDRESS = "grace@example.org"
DAY = "2026-03-10"


class Lifecycle(TerminalTest):
    def stored_today(self):
        tables = self.program.tables(ADDRESS)
        self.assertEqual(sum(tables["hourly"].values()), tables["daily"].get(DAY, 0))
        self.assertEqual(sum(tables["applications"].values()), tables["daily"].get(DAY, 0) - self.began_with)
        return tables["daily"].get(DAY, 0)

    def sign_in(self):
        self.program.start()
        self.program.sign_in(ADDRESS)
        self.began_with = self.program.first_count()

    def test_signals_end_it_in_order(self):
        self.sign_in()
        expected = self.began_with
        for number in (signal.SIGTERM, signal.SIGINT):
            with self.subTest(signal=number.name):
                self.type(40)
                expected += 40
                self.assertEqual(self.program.signal(number), 0)
                database = self.program.database(ADDRESS)  # complete, with no log left beside it
                files = {file.name for file in database.parent.glob("keypress*")}
                self.assertEqual(files, {database.name, f"{database.name}-sent"})
                self.assertEqual(self.stored_today(), expected)
                self.program.start()
                self.program.expect_count(expected)
        self.program.quit()

    def test_a_second_start_shows_the_first_and_counts_nothing_twice(self):
        self.sign_in()
        self.type(10)
        self.program.command("--toggle")
        wait_until(lambda: not self.program.window(), "the window hidden")
        second = self.program.command()
        self.assertEqual(second.returncode, 0, second.stderr)
        wait_until(self.program.window, "the window of the first", PATIENCE)
        self.type(30)
        self.program.quit()
        self.assertEqual(self.stored_today(), self.began_with + 40)

    def test_toggle_and_quit_need_no_running_program(self):
        self.assertEqual(self.program.command("--quit").returncode, 0)
        first = processes.start(
            [self.program.executable, "--toggle"], self.program.environment(), self.program.home / "output"
        )
        self.addCleanup(processes.end, first)
        wait_until(self.program.window, "the window", PATIENCE)
        wait_until(lambda: self.program.count() is not None, "the status item", PATIENCE)
        self.program.click_item()
        wait_until(lambda: not self.program.window(), "the window hidden by a click")
        self.assertEqual(self.program.command("--toggle").returncode, 0)
        wait_until(self.program.window, "the window once more")
        self.assertEqual(self.program.command("--quit").returncode, 0)
        self.assertEqual(first.wait(PATIENCE), 0)

    def test_it_explains_itself_without_a_display(self):
        environment = self.program.environment()
        for name in ("DISPLAY", "DBUS_SESSION_BUS_ADDRESS", "QT_QPA_PLATFORM"):
            del environment[name]
        self.program.environment = lambda: environment
        self.assertRegex(self.program.command("--version").stdout, r"(?i)^fernhollow \d+\.\d+\.\d+\n$")
        usage = self.program.command("--help")
        self.assertEqual(usage.returncode, 0)
        for option in ("--version", "--toggle", "--quit"):
            self.assertIn(option, usage.stdout)
        self.assertNotEqual(self.program.command("--nonsense").returncode, 0)
        for display in ({}, {"DISPLAY": ":7777"}):
            with self.subTest(display=display):
                environment.update(display)
                without_display = self.program.command()
                self.assertGreater(without_display.returncode, 0, "a plain failure, not a crash")
                self.assertIn("display", without_display.stderr)

    def test_losing_the_session_bus_stops_no_counting(self):
        desktop = self.use_a_desktop_of_its_own()
        self.sign_in()
        self.type(20)
        desktop.lose_bus()
        self.terminal.focus()
        desktop.type(letters(30))
        time.sleep(1)
        self.program.expect_running()
        self.assertEqual(self.program.signal(signal.SIGTERM), 0)
        self.assertEqual(self.stored_today(), self.began_with + 50)

    def test_losing_the_display_loses_no_press(self):
        desktop = self.use_a_desktop_of_its_own()
        self.sign_in()
        self.type(70)
        desktop.lose_display()
        self.program.wait()
        self.assertEqual(self.stored_today(), self.began_with + 70)

    def test_a_frozen_display_keeps_no_signal_from_writing_the_last_presses(self):
        for window in (False, True):
            with self.subTest(window=window):
                desktop = self.use_a_desktop_of_its_own()
                self.sign_in()
                if not window:
                    self.program.command("--toggle")
                    wait_until(lambda: not self.program.window(), "the window hidden")
                self.type(60)
                desktop.freeze_display()
                time.sleep(2)  # so that the window waits for the stopped server
                self.program.signal(signal.SIGTERM)
                self.assertEqual(self.stored_today(), self.began_with + 60)

    def test_a_frozen_display_at_the_start_leaves_the_program_to_signals(self):
        desktop = self.use_a_desktop_of_its_own()
        desktop.freeze_display()
        self.program.launch()
        time.sleep(0.5)
        self.assertNotEqual(self.program.signal(signal.SIGTERM), -signal.SIGKILL)

    def test_a_silent_session_bus_stops_no_counting(self):
        desktop = self.use_a_desktop_of_its_own()
        self.sign_in()
        self.program.quit()
        desktop.silence_bus()
        self.program.start()
        self.assertIn("session bus", self.program.log())
        self.terminal.focus()
        desktop.type(letters(25))
        self.assertEqual(self.program.signal(signal.SIGTERM), 0)
        self.assertEqual(self.stored_today(), self.began_with + 25)

    def use_a_desktop_of_its_own(self):
        """Continues on a desktop that the test may break."""
        self.desktop = Desktop()
        self.addCleanup(self.desktop.end)
        self.terminal = Terminal(self.desktop)
        self.program = Program(self.desktop, "home-of-" + self._testMethodName, self.clock)
        self.addCleanup(self.program.end)
        return self.desktop


if __name__ == "__main__":
    unittest.main()
