"""The introduction on every way through it, with a real keyboard and pointer."""

import unittest

from harness.case import DesktopTest
from harness.waiting import wait_until


class Introduction(DesktopTest):
    def begin(self, address, **changes):
        self.program.changes = changes
        self.program.start()
        self.program.type_address(address)
        self.program.submit_address()
        self.accessible = self.program.accessible()

    def expect_shown(self, text):
        wait_until(lambda: text in self.accessible.texts(), f"{text!r} in the window")

    def test_is_skipped_once_for_each_account(self):
        self.begin("ana@example.com")
        self.expect_shown("Welcome to Fernhollow")
        self.program.click("push button", "Skip")
        self.expect_shown("Week Comparison")
        self.program.quit()

        self.program.start()
        self.program.open_window()
        self.accessible = self.program.accessible()
        self.expect_shown("Week Comparison")
        self.program.click("push button", "Sign Out")
        self.program.type_address("bea@example.com")
        self.program.submit_address()
        self.expect_shown("Welcome to Fernhollow")

    def test_is_walked_through_in_portuguese_with_the_keyboard(self):
        self.begin("ana@example.com", LANG="pt_BR.UTF-8")
        self.expect_shown("Bem-vindo ao Fernhollow")
        self.desktop.press("space")
        self.expect_shown("Hoje é o Dia 1")
        self.desktop.press("shift+Tab", "space")
        self.expect_shown("Bem-vindo ao Fernhollow")
        self.desktop.press("space")
        self.expect_shown("Hoje é o Dia 1")
        self.desktop.press("Return")
        self.expect_shown("Como funciona")
        self.desktop.press("space")
        self.expect_shown("Tudo pronto!")
        self.program.click("push button", "Começar")
        self.expect_shown("Week Comparison")


if __name__ == "__main__":
    unittest.main()
