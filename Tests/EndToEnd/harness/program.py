"""Fernhollow itself: its start and end, its status item, its window, its data."""

import base64
import contextlib
import json
import os
import re
import signal
import sqlite3
import subprocess

from gi.repository import GLib

from . import processes
from .accessibility import AccessibleProgram
from .bus import call, connect
from .desktop import home_folders
from .waiting import wait_for_value, wait_until

IDENTIFIER = "app.fernhollow.Fernhollow"
ITEM = "org.kde.StatusNotifierItem"
WATCHER = "org.kde.StatusNotifierWatcher"
PROPERTIES = "org.freedesktop.DBus.Properties"
# Seconds. Sanitized builds are much slower; only the limits of waits depend on that.
PATIENCE = 60 if os.environ.get("FERNHOLLOW_SANITIZED") else 20


def program_under_test():
    path = os.environ.get("FERNHOLLOW_PROGRAM", "")
    if not os.access(path, os.X_OK):
        raise AssertionError(f"FERNHOLLOW_PROGRAM is not the program: {path!r}")
    return path


class Program:
    """The program of one person with a home of its own, on a desktop that may serve several."""

    def __init__(self, desktop, name, clock=None, executable=None, backend=None):
        self.desktop = desktop
        self.home = desktop.folder / name
        self.home.mkdir(mode=0o700)
        self.folders = home_folders(self.home)
        self.process = None
        self.changes = {}  # changes of the environment
        self.prefix = []
        self.executable = executable or program_under_test()
        self._clock = clock
        self.backend = backend

    def prepare(self, address, history=None):
        """Signs in by the settings file, with the introduction seen and a history. The program is not running."""
        session = json.dumps({"email": address, "verifiedAt": 800000000.0}).replace('"', '\\"')
        preferences = self.folders["XDG_CONFIG_HOME"] / "Fernhollow" / f"{IDENTIFIER}.conf"
        preferences.parent.mkdir(parents=True, mode=0o700, exist_ok=True)
        preferences.write_text(
            f'[General]\n{IDENTIFIER}.accountSession="@ByteArray({session})"\n'
            f"{IDENTIFIER}.hasSeenOnboarding_{address}=true\n"
        )
        if history:
            self.start()  # which makes the database
            self.quit()
            history.fill(self.database(address))

    # Running

    def environment(self):
        environment = dict(self.desktop.environment, HOME=str(self.home))
        environment.update({name: str(folder) for name, folder in self.folders.items()})
        environment.update(self.changes)
        preloaded = []
        if "FERNHOLLOW_REDIRECTED_BACKEND" in os.environ:  # set in tests, but not in a demonstration
            environment["REDIRECTED_BACKEND"] = str(self.backend.port if self.backend else 0)
            preloaded.append(os.environ["FERNHOLLOW_REDIRECTED_BACKEND"])
        if self._clock:
            environment.update(self._clock.environment())
            preloaded.append(self._clock.library)
        if preloaded:
            environment["LD_PRELOAD"] = ":".join(preloaded)
        return environment

    def start(self):
        """Starts the program and waits until it counts."""
        started = "[KeyboardMonitor] Started successfully"
        before = self.log().count(started)
        self.launch()
        counts_or_ended = lambda: self.log().count(started) > before or self.process.poll() is not None
        wait_until(counts_or_ended, "the program counting", PATIENCE)
        self.expect_running()
        return self

    def launch(self):
        """Starts the program without waiting."""
        command = [*self.prefix, self.executable]
        self.process = processes.start(command, self.environment(), self.home / "output")

    def command(self, *arguments):
        """Starts the program a second time, with or without arguments, and returns its result."""
        return processes.run([self.executable, *arguments], self.environment(), PATIENCE)

    def quit(self):
        """Asks the running program to end; returns once it has."""
        done = self.command("--quit")
        if done.returncode != 0:
            raise AssertionError(f"--quit: {done.returncode} {done.stderr}")
        return self.wait(2)

    def signal(self, number=signal.SIGTERM):
        self.process.send_signal(number)
        return self.wait()

    def wait(self, seconds=PATIENCE):
        """Waits for the end of the program and returns its exit code."""
        try:
            return self.process.wait(seconds)
        except subprocess.TimeoutExpired:
            raise AssertionError(f"the program still runs after {seconds:g} s") from None

    def expect_running(self):
        if self.process.poll() is not None:
            raise AssertionError(f"the program ended with {self.process.returncode}: {self.output()[-2000:]}")

    def end(self):
        if self.process:
            processes.end(self.process)

    # Status item

    def title(self):
        """The title of the status item, or None while there is none."""
        try:
            item = self._item()
            return item and self._ask(*item, PROPERTIES, "Get", "(ss)", (ITEM, "Title"))[0]
        except GLib.Error:
            return None

    def note(self):
        """The sentence that the item's tooltip adds to the title."""
        return self._ask(*self._item(), PROPERTIES, "Get", "(ss)", (ITEM, "ToolTip"))[0][3]

    def count(self):
        """The title as a number."""
        title = self.title()
        return int(re.sub(r"\D", "", title) or 0) if title is not None else None

    def counted(self):
        """The count, once a status item shows it."""
        return wait_until(lambda: self.title() is not None and (self.count(),), "a status item", PATIENCE)[0]

    def expect_count(self, expected):
        wait_for_value(self.count, expected, "count in the status item", PATIENCE)

    def click_item(self):
        item = self._item()
        self._ask(*item, ITEM, "Activate", "(ii)", (0, 0))

    def lose_item(self):
        """What a host says that takes an item out of its list."""
        bus = self._session_bus()
        name, path = self._item()
        gone = GLib.Variant("(s)", (name + path,))
        bus.emit_signal(None, "/StatusNotifierWatcher", WATCHER, "StatusNotifierItemUnregistered", gone)
        bus.flush_sync(None)
        bus.close_sync(None)

    def _item(self):
        asked = (WATCHER, "RegisteredStatusNotifierItems")
        (items,) = self._ask(WATCHER, "/StatusNotifierWatcher", PROPERTIES, "Get", "(ss)", asked)
        if len(items) > 1:
            raise AssertionError(f"more than one status item: {items}")
        name, _, path = items[0].partition("/") if items else ("", "", "")
        return (name, "/" + path) if items else None

    def _ask(self, service, path, interface, method, signature, arguments):
        bus = self._session_bus()
        try:
            return call(bus, service, path, interface, method, GLib.Variant(signature, arguments))
        finally:
            bus.close_sync(None)

    def _session_bus(self):
        return connect(self.desktop.environment["DBUS_SESSION_BUS_ADDRESS"])

    # Window

    def window(self):
        """The id of the main window while it is visible."""
        return self.desktop.window_titled("Fernhollow")

    def accessible(self):
        return AccessibleProgram(self.desktop, self.process.pid)

    def open_window(self):
        if not self.window():
            done = self.command("--toggle")
            if done.returncode != 0:
                raise AssertionError(f"--toggle: {done.returncode} {done.stderr}")
        return wait_until(self.window, "the main window", PATIENCE)

    def click(self, role, name=None):
        """Clicks on the middle of a widget, once it is visible."""
        accessible = self.accessible()
        found = wait_until(lambda: accessible.shown(role, name), f"{role} {name or ''} in the window", PATIENCE)
        self.desktop.click(*accessible.centre(found[0]))

    def type_address(self, address):
        """Opens the window and types into the e-mail field."""
        self.desktop.focus(self.open_window())
        self.click("text")
        self.desktop.type(address, 20)

    def sign_in(self, address):
        """Signs in by hand and, where the account is new to this machine, skips the introduction."""
        self.type_address(address)
        self.submit_address()
        self.skip_introduction()

    def skip_introduction(self):
        accessible = self.accessible()
        dashboard_or_skip = lambda: accessible.shown(name="Dashboard") or accessible.shown(name="Skip")
        if wait_until(dashboard_or_skip, "the account's window", PATIENCE)[0].name == "Skip":
            self.click("push button", "Skip")
            wait_until(lambda: accessible.shown(name="Dashboard"), "the dashboard", PATIENCE)

    def submit_address(self):
        self.desktop.press("Return")
        accessible = self.accessible()
        wait_until(lambda: accessible.shown("push button", "Sign Out"), "the account's window", PATIENCE)

    def first_count(self):
        """What the count begins with after sign_in(): the Return that ended the address may be counted
        just before or just after the account's own counts began."""
        wait_until(lambda: self.count() in (0, 1), "a count that begins anew", PATIENCE)
        return self.count()

    # What it leaves behind

    def log(self):
        return _text(self.home / "fernhollow_debug.log")

    def output(self):
        return _text(self.home / "output")

    def database(self, address):
        token = base64.b64encode(address.lower().encode()).decode()
        token = token.replace("/", "_").replace("+", "-").replace("=", "")[:32]
        return self.folders["XDG_DATA_HOME"] / "Fernhollow" / f"keypress_{token}.sqlite"

    def tables(self, address):
        """The four tables without their time stamps."""
        uri = self.database(address).as_uri() + "?mode=ro"
        with contextlib.closing(sqlite3.connect(uri, uri=True)) as database:
            read = database.execute
            return {
                "daily": dict(read("SELECT day, count FROM daily_counts")),
                "hourly": {tuple(row[:2]): row[2] for row in read("SELECT day, hour, count FROM hourly_counts")},
                "applications": {
                    tuple(row[:3]): row[3] for row in read("SELECT day, hour, bundle_id, count FROM app_hour_counts")
                },
                "registry": dict(read("SELECT bundle_id, app_name FROM app_registry")),
            }

    def device(self):
        """The identifier of this installation."""
        settings = "".join(_text(file) for file in self.folders["XDG_CONFIG_HOME"].rglob("*.conf"))
        return re.search(r"deviceId=([0-9A-F-]{36})", settings)[1]

    def report(self):
        """The facts that a reader of a failed test needs."""
        return f"--- log\n{self.log()[-3000:]}\n--- output\n{self.output()[-3000:]}"


def _text(path):
    return path.read_text(errors="replace") if path.exists() else ""
