"""Counting in a Wayland session, where presses come as numbers and the compositor names the application."""

import types
import unittest

from harness.case import DesktopTest, Ledger
from harness.program import IDENTIFIER
from harness.waiting import wait_until
from harness.wayland import Keytap, KWinDesktop, SwayDesktop

ADDRESS = "ada@example.org"
DAY = "2026-03-10"
# A GTK 3 program reports another identifier than its desktop entry has.
EDITOR = types.SimpleNamespace(window="mousepad", identifier="org.xfce.mousepad", name="Mousepad")
WIDGETS = types.SimpleNamespace(
    window="gtk3-widget-factory", identifier="gtk3-widget-factory", name="Widget Factory"
)


class WaylandTests:
    """What holds on every compositor."""

    make_desktop: type

    @classmethod
    def setUpClass(cls):
        cls.desktop = cls.make_desktop()
        cls.addClassCleanup(cls.desktop.end)
        for application in (EDITOR, WIDGETS):
            cls.desktop.spawn([application.window])
            wait_until(lambda: cls.desktop.windows(application.window), application.name, 30)

    def setUp(self):
        super().setUp()
        self.program.prepare(ADDRESS)
        socket = self.desktop.folder / f"{self._testMethodName}.socket"
        self.program.changes["REDIRECTED_KEYTAP"] = str(socket)
        self.make_keytap = lambda: Keytap(socket)
        self.ledger = Ledger()

    def start_with_keytap(self):
        keytap = self.make_keytap()
        self.addCleanup(keytap.end)
        self.program.start()
        keytap.wait_for_program()
        return keytap

    def expect_counted(self):
        self.program.expect_count(self.ledger.on(DAY))
        self.program.quit()
        self.assertEqual(self.program.tables(ADDRESS), self.ledger.tables())

    def test_presses_go_to_the_application_in_front_up_to_the_switch(self):
        keytap = self.start_with_keytap()
        for round in range(10):
            for application in (EDITOR, WIDGETS):
                self.desktop.focus(application.window)
                keytap.press(round + 1)  # and at once to the other window, long before the slot ends
                self.ledger.add(round + 1, DAY, 13, application)
        self.expect_counted()

    def test_counting_begins_and_goes_on_whenever_the_service_is_there(self):
        self.program.launch()
        missing = "In a Wayland session Fernhollow counts through a small system service"
        wait_until(lambda: missing in self.program.log(), "the reason why nothing is counted")
        wait_until(lambda: self.desktop.windows(IDENTIFIER), "the message that says so")
        self.desktop.focus(WIDGETS.window)
        keytap = self.make_keytap()  # the person turned it on
        self.addCleanup(keytap.end)
        keytap.wait_for_program()
        keytap.press(40)
        self.ledger.add(40, DAY, 13, WIDGETS)
        self.program.expect_count(40)
        keytap.refuse(2)
        wait_until(lambda: "Another session is in front" in self.program.log(), "the refusal in the log")
        keytap.wait_for_program()  # by itself
        keytap.press(2)
        self.ledger.add(2, DAY, 13, WIDGETS)
        self.expect_counted()


class Sway(WaylandTests, DesktopTest):
    make_desktop = SwayDesktop


@unittest.skipUnless(KWinDesktop.program, "kwin_wayland is not installed")
class KWin(WaylandTests, DesktopTest):
    make_desktop = KWinDesktop


if __name__ == "__main__":
    unittest.main()
