"""The program can be reached on every desktop: with a status item host, a tray or neither, and when that changes."""

import time
import unittest

from harness import processes
from harness.terminal import Terminal
from harness.case import DesktopTest, letters
from harness.program import PATIENCE
from harness.waiting import wait_until

# Seconds. Clicks that follow each other faster are one double click.
DOUBLE_CLICK = 0.5


class OnADesktopWithoutAnyHost(DesktopTest):
    host = None

    def test_the_window_opens_at_start(self):
        self.program.start()
        wait_until(self.program.window, "the window", PATIENCE)


class OnADesktopWithAHost(DesktopTest):
    def test_a_click_on_the_item_opens_and_hides_the_window(self):
        self.program.start()
        self.program.expect_count(0)
        self.assertIsNone(self.program.window(), "nothing opens by itself")
        for _ in range(2):
            self.program.click_item()
            window = wait_until(self.program.window, "the window", PATIENCE)
            wait_until(lambda: self.desktop.active_window() == int(window), "the window in front")
            self.program.click_item()
            wait_until(lambda: not self.program.window(), "the window hidden")


    def test_the_window_opens_where_the_host_drops_the_item(self):
        self.program.start()
        self.program.expect_count(0)
        self.program.lose_item()
        wait_until(self.program.window, "the window", PATIENCE)

    def test_counting_is_paused_until_it_is_resumed_or_the_program_starts_again(self):
        terminal = Terminal(self.desktop)
        self.program.start()
        self.program.expect_count(0)
        self.assertEqual(self.program.command("--pause").returncode, 0)
        wait_until(lambda: "paused" in self.program.note(), "the tooltip saying so", PATIENCE)
        terminal.focus()
        self.desktop.type(letters(20))
        self.assertEqual(self.program.command("--resume").returncode, 0)
        self._count_on(terminal, 3)
        self.program.command("--pause")
        self.program.quit()
        self.program.start()
        self._count_on(terminal, 4)

    def _count_on(self, terminal, presses):
        wait_until(lambda: self.program.title() is not None and not self.program.note(), "counting", PATIENCE)
        before = self.program.count()
        time.sleep(1.5)  # the monitor starts again with the next refresh
        terminal.focus()
        self.desktop.type(letters(presses))
        self.program.expect_count(before + presses)


class OnADesktopWithATray(DesktopTest):
    host = "tray"

    def test_the_icon_in_the_tray_shows_the_count_and_opens_the_window(self):
        terminal = Terminal(self.desktop)
        self.program.start()
        icon = wait_until(self.desktop.tray_icon, "the icon in the tray", PATIENCE)
        terminal.focus()
        before = self.desktop.picture(icon)
        self.desktop.type(letters(7))
        wait_until(lambda: self.desktop.picture(icon) != before, "the icon changing with the count")

        self.assertIsNone(self.program.window(), "nothing opens by itself")
        x, y, width, height = icon
        self.desktop.click(x + width // 2, y + height // 2)
        wait_until(self.program.window, "the window", PATIENCE)
        time.sleep(DOUBLE_CLICK)
        self.desktop.click(x + width // 2, y + height // 2)
        wait_until(lambda: not self.program.window(), "the window hidden")


if __name__ == "__main__":
    unittest.main()
