"""Every press is counted once, on its day, in its hour, for its application, and shown."""

import time
import unittest

from harness.editor import Editor
from harness.case import DesktopTest, Ledger, letters
from harness.waiting import wait_for_value, wait_until
from harness.terminal import Terminal

TYPED = "  Ada.Lovelace@Example.ORG "
ADDRESS = "ada.lovelace@example.org"
TUESDAY, WEDNESDAY = "2026-03-10", "2026-03-11"


class Counting(DesktopTest):
    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        cls.terminal = Terminal(cls.desktop)
        cls.editor = Editor(cls.desktop)

    def setUp(self):
        super().setUp()
        self.ledger = Ledger()

    def sign_in(self):
        self.program.start()
        self.program.sign_in(TYPED)
        self.ledger.add(self.program.first_count(), TUESDAY, 13)

    def type_in(self, application, count, day, hour):
        """Types, and checks with the application how many keys it received."""
        application.focus()
        before = application.received()
        self.desktop.type(letters(count))
        wait_for_value(
            lambda: application.received() - before, count, f"keys that {application.name} received"
        )
        self.ledger.add(count, day, hour, application)

    def expect_shown(self, day):
        self.program.expect_count(self.ledger.on(day))

    def expect_stored(self):
        self.assertEqual(self.program.tables(ADDRESS), self.ledger.tables())

    def expect_in_window(self, day):
        text = f"{self.ledger.on(day):,}"
        accessible = self.program.accessible()
        wait_until(lambda: text in accessible.texts(), f"{text} in the window")
        self.assertIn(ADDRESS, accessible.texts())

    def test_a_thousand_presses_over_an_hour_and_midnight_and_a_restart(self):
        self.program.start()
        self.program.type_address(TYPED)
        self.program.expect_count(len(TYPED))  # presses before the sign-in are shown but belong to no account
        self.program.submit_address()
        self.program.skip_introduction()
        self.ledger.add(self.program.first_count(), TUESDAY, 13)
        self.assertIn(f"Email verified successfully: {ADDRESS}\n", self.program.log())

        self.type_in(self.terminal, 300, TUESDAY, 13)
        self.expect_shown(TUESDAY)
        self.clock.set("2026-03-10 14:00:00")
        self.type_in(self.terminal, 150, TUESDAY, 14)
        self.type_in(self.editor, 250, TUESDAY, 14)
        self.expect_shown(TUESDAY)
        self.expect_in_window(TUESDAY)

        self.clock.set("2026-03-10 23:59:59")
        self.type_in(self.editor, 120, TUESDAY, 23)
        self.expect_shown(TUESDAY)
        self.clock.set("2026-03-11 00:00:00")
        wait_for_value(self.program.count, 0, "count of the new day")
        self.type_in(self.terminal, 80, WEDNESDAY, 0)
        self.expect_shown(WEDNESDAY)
        self.expect_in_window(WEDNESDAY)
        shown = f"{self.ledger.on(WEDNESDAY)}\n"
        self.assertEqual(self.program.command("--today").stdout, shown)
        self.assertEqual(self.program.quit(), 0)
        self.assertEqual(self.program.command("--today").stdout, shown)
        self.expect_stored()

        self.program.start()
        self.expect_shown(WEDNESDAY)
        self.type_in(self.editor, 100, WEDNESDAY, 0)
        self.program.open_window()
        self.expect_shown(WEDNESDAY)
        self.expect_in_window(WEDNESDAY)
        self.assertEqual(self.program.quit(), 0)
        self.expect_stored()
        self.assertGreaterEqual(self.ledger.on(TUESDAY) + self.ledger.on(WEDNESDAY), 1000)

    def test_presses_while_midnight_passes_land_on_one_side_of_it(self):
        self.sign_in()
        self.clock.set("2026-03-10 23:59:59")
        self.editor.focus()
        typing = self.desktop.start_typing(letters(300))
        time.sleep(0.7)
        self.clock.set("2026-03-11 00:00:00")
        typing.wait(30)
        signed_in = self.ledger.on(TUESDAY)
        after = wait_until(lambda: self.settled(), "a count that rests")
        self.assertEqual(self.program.quit(), 0)

        self.ledger.add(300 - after, TUESDAY, 23, self.editor)
        self.ledger.add(after, WEDNESDAY, 0, self.editor)
        self.assertTrue(0 < after < 300, after)
        self.assertEqual(self.ledger.on(TUESDAY) + self.ledger.on(WEDNESDAY), signed_in + 300)
        self.expect_stored()

    def settled(self):
        """The count once it has not changed for a second."""
        before = self.program.count()
        time.sleep(1)
        return before if before == self.program.count() else None

    def test_a_held_key_counts_each_repeat(self):
        self.sign_in()
        self.terminal.focus()
        before = self.terminal.received()
        self.desktop.hold("k", 2.0)
        time.sleep(0.3)
        held = self.terminal.received() - before
        self.assertGreater(held, 10, "the display repeats held keys")
        self.ledger.add(held, TUESDAY, 13, self.terminal)
        self.expect_shown(TUESDAY)
        self.assertEqual(self.program.quit(), 0)
        self.expect_stored()

    def test_presses_in_our_own_window_belong_to_no_application(self):
        self.sign_in()
        self.desktop.focus(self.program.open_window())
        self.desktop.type(letters(25))
        self.ledger.add(25, TUESDAY, 13)
        self.expect_shown(TUESDAY)
        self.type_in(self.editor, 5, TUESDAY, 13)
        self.expect_shown(TUESDAY)
        self.expect_in_window(TUESDAY)
        self.assertEqual(self.program.quit(), 0)
        self.expect_stored()


if __name__ == "__main__":
    unittest.main()
