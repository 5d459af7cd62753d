"""Two machines of one person, each with its own clock and time zone, share one backend."""

import sys
import unittest

from harness.terminal import Terminal
from harness.backend import Backend, SilentServer
from harness.case import Ledger, letters
from harness.clock import FakedClock
from harness.desktop import Desktop
from harness.program import PATIENCE, Program
from harness.waiting import wait_for_value, wait_until

ADDRESS = "ada+keys@example.org"
TUESDAY, WEDNESDAY = "2026-03-10", "2026-03-11"
# Seconds: a flush every 15 seconds, a cycle one second later, and up to 15 seconds between cycles of an idle
# machine.
SYNCED = PATIENCE + 40


class Machine:
    """A desktop, a person who types on it, and the expected counts."""

    def __init__(self, name, zone, backend):
        self.desktop = Desktop(time_zone=zone)
        self.clock = FakedClock(self.desktop.folder / "clock", zone)
        self.program = Program(self.desktop, name, self.clock, backend=backend)
        self.terminal = Terminal(self.desktop)
        self.ledger = Ledger()

    def sign_in(self, day, hour):
        self.program.start()
        self.program.sign_in(ADDRESS)
        self.ledger.add(self.program.first_count(), day, hour)
        self.terminal.focus()

    def type(self, count, day, hour):
        self.terminal.focus()
        before = self.terminal.received()
        self.desktop.type(letters(count))
        wait_for_value(lambda: self.terminal.received() - before, count, "keys that the terminal received")
        self.ledger.add(count, day, hour, self.terminal)

    def counted(self):
        """The three expected tables of counts, on the machine and on the server."""
        return {name: rows for name, rows in self.ledger.tables().items() if name != "registry"}

    def end(self):
        self.program.end()
        self.desktop.end()


class Synchronisation(unittest.TestCase):
    def setUp(self):
        self.backend = Backend()
        self.addCleanup(self.backend.close)
        self.backend.start()
        self.machines = []
        self.berlin = self.machine("berlin", "Europe/Berlin")
        self.new_york = self.machine("new_york", "America/New_York")

    def machine(self, name, zone):
        machine = Machine(name, zone, self.backend)
        self.addCleanup(machine.end)
        self.machines.append(machine)
        return machine

    def doCleanups(self):
        if self._outcome and not self._outcome.success:
            for machine in getattr(self, "machines", []):
                print(f"\n=== {machine.program.home}\n{machine.program.report()}", file=sys.stderr)
        return super().doCleanups()

    def expect_on_server(self, machine):
        device = machine.program.device()
        wait_for_value(
            lambda: self.backend.tables(ADDRESS, device), machine.counted(), "what the server has", SYNCED
        )

    def total(self, day):
        return self.backend.value(f"SELECT get_account_today_total('{ADDRESS}', '{day}')")

    def test_two_machines_add_up_to_the_last_press(self):
        berlin, new_york = self.berlin, self.new_york
        # The same moment on both machines: in one place the next day has begun.
        berlin.clock.set("2026-03-11 00:30:00")
        new_york.clock.set("2026-03-10 19:30:00")
        berlin.sign_in(WEDNESDAY, 0)
        new_york.sign_in(TUESDAY, 19)
        berlin.type(120, WEDNESDAY, 0)
        new_york.type(80, TUESDAY, 19)
        self.expect_on_server(berlin)
        self.expect_on_server(new_york)
        berlin.program.expect_count(berlin.ledger.on(WEDNESDAY))

        # The day begins in the other place, too. No key is pressed there, so it shows the account's total.
        new_york.clock.set("2026-03-11 00:00:00")
        wait_for_value(
            new_york.program.count, berlin.ledger.on(WEDNESDAY), "the account's count of the day", SYNCED
        )
        new_york.type(5, WEDNESDAY, 0)
        new_york.program.expect_count(berlin.ledger.on(WEDNESDAY) + 5)
        self.expect_on_server(new_york)
        self.assertEqual(self.total(TUESDAY), new_york.ledger.on(TUESDAY))
        self.assertEqual(self.total(WEDNESDAY), berlin.ledger.on(WEDNESDAY) + new_york.ledger.on(WEDNESDAY))
        self.assertEqual(self.backend.value("SELECT count(*) FROM devices"), 2)
        for machine in self.machines:
            self.assertEqual(machine.program.quit(), 0)
            self.assertEqual(machine.program.tables(ADDRESS), machine.ledger.tables())

    def test_a_silent_server_holds_nothing_up(self):
        berlin = self.berlin
        silent = SilentServer()
        self.addCleanup(silent.end)
        berlin.program.backend = silent
        berlin.clock.set("2026-03-10 13:59:40")
        berlin.sign_in(TUESDAY, 13)
        wait_until(lambda: silent.accepted, "a request", PATIENCE)
        berlin.type(25, TUESDAY, 13)
        berlin.program.expect_count(berlin.ledger.on(TUESDAY))
        berlin.clock.set("2026-03-11 00:00:00")
        wait_for_value(berlin.program.count, 0, "count of the new day")
        self.assertEqual(berlin.program.quit(), 0)
        self.assertEqual(berlin.program.tables(ADDRESS), berlin.ledger.tables())


if __name__ == "__main__":
    unittest.main()
