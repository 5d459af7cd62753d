"""The desktop of the measurements and the person who uses it."""

import base64
import contextlib
import json
import os
import pathlib
import sqlite3
import subprocess
import sys
import time

TOP = pathlib.Path(__file__).resolve().parent.parent.parent
sys.path[:0] = [str(TOP / "Tests" / "EndToEnd"), str(TOP / "scripts")]

from harness import processes  # noqa: E402
from harness.desktop import Desktop, home_folders  # noqa: E402
from harness.waiting import wait_until  # noqa: E402

IDENTIFIER = "app.fernhollow.Fernhollow"
ADDRESS = "you@example.org"
# Seconds after which all work of a start is done.
SETTLING = 4


class Stage:
    """A virtual desktop, the program and the floors in the folder `build`."""

    def __init__(self, build, changes, tray=True):
        self.build = build
        self.changes = changes  # changes of the program's environment
        self.desktop = Desktop(host="tray" if tray else None, time_zone="Europe/Berlin")
        # The accessibility bus is for tests that read windows, and costs each Qt program some memory.
        self.desktop.environment.pop("QT_LINUX_ACCESSIBILITY_ALWAYS_ON", None)
        os.environ["FERNHOLLOW_FAKED_CLOCK"] = str(build / "Tests/EndToEnd/libfaked_clock.so")
        self.redirection = str(build / "Tests/EndToEnd/libredirected_backend.so")
        self._people = 0

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.desktop.end()

    def tool(self, name):
        return str(self.build / name)

    def person(self, signed_in, backend_port=0, clock=None):
        """A person whose backend is at a port of this machine or, with port 0, cannot be reached."""
        self._people += 1
        person = Person(self, f"person{self._people}", signed_in)
        preloaded = [self.redirection]
        if clock:
            preloaded.append(clock.library)
            person.environment.update(clock.environment())
        person.environment["LD_PRELOAD"] = ":".join(preloaded)
        person.environment["REDIRECTED_BACKEND"] = str(backend_port)
        return person

    @contextlib.contextmanager
    def floor(self, name, *arguments, **options):
        log = self.desktop.folder / f"{name}.log"
        command = [self.tool(name), *arguments]
        child = processes.start(command, self.desktop.environment, log, **options)
        try:
            yield child
            if child.poll():  # a program that was asked to end, and then prints its figures, ends with 0
                raise AssertionError(f"{name} failed: {log.read_text()}")
        finally:
            processes.end(child)


class Person:
    """A person with a home and the program, and with a history if signed in."""

    def __init__(self, stage, name, signed_in):
        self.stage = stage
        self.home = stage.desktop.folder / name
        folders = home_folders(self.home)
        self.environment = dict(stage.desktop.environment, HOME=str(self.home))
        self.environment.update({key: str(folder) for key, folder in folders.items()})
        self.environment.update(stage.changes)
        token = base64.urlsafe_b64encode(ADDRESS.encode()).decode().rstrip("=")[:32]
        self.database = folders["XDG_DATA_HOME"] / "Fernhollow" / f"keypress_{token}.sqlite"
        self.database.parent.mkdir(parents=True, mode=0o700)
        self.first_day = self.last_day = None
        if signed_in:
            self._sign_in(folders["XDG_CONFIG_HOME"] / "Fernhollow" / f"{IDENTIFIER}.conf")
            self.first_day, self.last_day = make_history(stage, self.database)

    def _sign_in(self, preferences):
        session = json.dumps({"email": ADDRESS, "verifiedAt": 800000000.0}).replace('"', '\\"')
        preferences.parent.mkdir(parents=True, mode=0o700)
        preferences.write_text(
            f'[General]\n{IDENTIFIER}.accountSession="@ByteArray({session})"\n'
            f"{IDENTIFIER}.hasSeenOnboarding_{ADDRESS}=true\n"
        )

    @contextlib.contextmanager
    def program(self):
        """The running program, after all work of its start and without an open window."""
        log = self.home / "fernhollow_debug.log"
        log.unlink(missing_ok=True)
        child = processes.start([self.stage.tool("fernhollow")], self.environment, self.home / "output")
        try:
            started = "[KeyboardMonitor] Started successfully"
            wait_until(lambda: log.exists() and started in log.read_text(), "the program counting")
            time.sleep(SETTLING)
            if self.last_day is None:
                self.toggle_window()  # without an account the window opens by itself
                time.sleep(1)
            yield child
            if child.poll() is not None:
                raise AssertionError(f"the program ended early: {(self.home / 'output').read_text()}")
        finally:
            processes.end(child)

    def toggle_window(self):
        command = [self.stage.tool("fernhollow"), "--toggle"]
        subprocess.run(command, env=self.environment, check=True, timeout=20)

    def pressed(self):
        """The sum of the hourly table."""
        uri = self.database.as_uri() + "?mode=ro"
        with contextlib.closing(sqlite3.connect(uri, uri=True)) as database:
            return database.execute("SELECT SUM(count) FROM hourly_counts").fetchone()[0]


def uploaded(person):
    """Waits until the history has reached the backend."""
    done = "uploadAllAppHistory completed"
    wait_until(lambda: done in (person.home / "fernhollow_debug.log").read_text(), "the upload", 300, 1)


def make_history(stage, database):
    """Fills a database; returns its first and its last day."""
    done = subprocess.run(
        [stage.tool("make_history"), str(database)],
        env=stage.desktop.environment,
        check=True,
        capture_output=True,
        text=True,
    )
    return done.stdout.split()
