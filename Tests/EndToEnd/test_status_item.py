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
