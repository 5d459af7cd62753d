"""Pictures of Fernhollow's windows. Arguments: the folder for them and, to take some only, their names."""

import contextlib
import pathlib
import signal
import sqlite3
import sys
import time

TOP = pathlib.Path(__file__).resolve().parent.parent
sys.path.insert(0, str(TOP / "Tests" / "EndToEnd"))

from harness.clock import FakedClock  # noqa: E402
from harness.desktop import Desktop  # noqa: E402
from harness.program import Program  # noqa: E402
from harness.waiting import wait_until  # noqa: E402
from history import AccountServer, History  # noqa: E402

ADDRESS = "ana@example.org"
NOW = "2026-03-10 16:20:00"
SETTLING = 0.7  # seconds, for animations and the last refresh
DEVICES = [
    {"device_id": "1", "device_name": "ana-laptop", "last_seen_at": "2026-03-10T15:19:40Z"},
    {"device_id": "2", "device_name": "Workstation in the office", "last_seen_at": "2026-03-10T11:20:00Z"},
    {"device_id": "3", "device_name": "old-netbook", "last_seen_at": "2026-03-02T08:00:00Z"},
]


class Scene:
    """One person's program on the desktop, whose windows are photographed."""

    def __init__(self, studio, name, changes):
        self.studio = studio
        self.desktop = studio.desktop
        self.program = Program(studio.desktop, f"home-{name}", studio.clock)
        self.program.changes = changes
        self._server = None

    def account(self, history):
        self.program.prepare(ADDRESS, history)
        machines = [{**DEVICES[0], "device_id": self.program.device()}, *DEVICES[1:]]
        self._server = AccountServer(ADDRESS, history, machines)
        self.program.backend = self._server
        self.program.start()
        return self

    def newcomer(self):
        self.program.start()
        return self

    def end(self):
        self.program.end()
        if self._server:
            self._server.end()

    def open(self, width=420, height=750):
        window = self.program.open_window()
        self.desktop.focus(window)
        self.desktop.run("xdotool", "windowsize", "--sync", window, width, height)
        if self._server:
            accessible = self.program.accessible()
            wait_until(lambda: accessible.shown(name="Metrics"), "the figures")
            downloaded = "[CloudSync] Downloaded history"
            wait_until(lambda: downloaded in self.program.log(), "the account's days", 60)
            time.sleep(2)  # until a refresh has shown them
        return window

    def rest(self):
        """Moves the pointer to where it points at nothing."""
        self.desktop.run("xdotool", "mousemove", 2, 2)

    def shoot(self, title="Fernhollow", rest=True):
        if rest:
            self.rest()
        time.sleep(SETTLING)
        window = wait_until(lambda: self.desktop.window_titled(title), f"the window {title}")
        self.studio.picture(self.desktop.window_area(window))

    def day(self, column):
        """The middle, on the screen, of a day's column; 0 is the oldest day."""
        accessible = self.program.accessible()
        days = [node for node in accessible.shown("push button") if node.name.endswith("key presses")]
        return accessible.centre(days[column])

    def open_day(self, column):
        """Opens a day with the keyboard, because accessible positions are those before scaling."""
        self.desktop.press("Tab", *["Left"] * (14 - column), "Return")
        return "Day Details - .*"


class Studio:
    """The desktop, the time of day there and the picture that is being taken."""

    def __init__(self, folder):
        self.desktop = Desktop(size="1600x1500")
        self.clock = FakedClock(self.desktop.folder / "clock")
        self.clock.set(NOW)
        self._folder = folder
        self._name = None

    def picture(self, area):
        self.desktop.picture(area, self._folder / f"{self._name}.png")

    @contextlib.contextmanager
    def scene(self, name, **changes):
        self._name = name
        scene = Scene(self, name, changes)
        try:
            yield scene
        finally:
            scene.end()


def month(**options):
    return History("2026-03-10", hour=16, **options)


def sign_in(scene):
    scene.newcomer().open()
    scene.shoot()


def refused(scene):
    scene.newcomer()
    scene.program.type_address("ana")
    scene.desktop.press("Return")
    scene.shoot()


def introduction(step, width=420, height=750):
    def take(scene):
        scene.newcomer()
        scene.program.type_address(ADDRESS)
        scene.program.submit_address()
        scene.desktop.run("xdotool", "windowsize", "--sync", scene.program.window(), width, height)
        for _ in range(step):
            time.sleep(SETTLING)
            scene.desktop.press("space")
        scene.shoot()

    return take


def dashboard(width=420, height=750, **options):
    def take(scene):
        scene.account(month(**options)).open(width, height)
        scene.shoot()

    return take


def day_under_the_pointer(scene):
    scene.account(month()).open(420, 960)
    scene.desktop.run("xdotool", "mousemove", *scene.day(8))
    scene.shoot(rest=False)


def day_with_the_keyboard(scene):
    scene.account(month()).open(420, 960)
    scene.desktop.press("Tab", "Left", "Left", "Left")
    scene.shoot()


def search(scene):
    scene.account(month()).open(420, 960)
    scene.program.click("text")
    scene.desktop.type("CA", 20)
    scene.shoot()


def devices(scene):
    scene.account(month()).open()
    scene.program.click("push button", ADDRESS)
    scene.shoot()


def not_saved(width=420, height=750):
    def take(scene):
        scene.account(month()).open(width, height)
        database = sqlite3.connect(scene.program.database(ADDRESS), isolation_level=None)
        with contextlib.closing(database):
            database.execute("BEGIN IMMEDIATE")
            scene.desktop.type("written in vain")
            wait_until(scene.program.note, "the sentence about it", 60)
            scene.shoot()

    return take


def nothing_yet(width=420, height=750):
    def take(scene):
        scene.program.prepare(ADDRESS)
        scene.program.start()
        scene.open(width, height)
        scene.shoot()

    return take


def offline(scene):
    scene.program.prepare(ADDRESS, month())
    scene.program.start()
    scene.open()
    scene.shoot()


def hour_under_the_pointer(scene):
    window = scene.account(month()).open(420, 750)
    left, top, _, _ = scene.desktop.window_area(window)
    scene.desktop.run("xdotool", "mousemove", left + 255, top + 120)
    scene.shoot(rest=False)


def search_without_a_hit(scene):
    scene.account(month()).open(420, 960)
    scene.program.click("text")
    scene.desktop.type("zebra", 20)
    scene.shoot()


def paused(width=420, height=750):
    def take(scene):
        scene.account(month()).open(width, height)
        scene.program.command("--pause")
        wait_until(scene.program.note, "the sentence about it")
        scene.shoot()

    return take


def after_signing_out(scene):
    scene.newcomer()
    scene.program.sign_in(ADDRESS)
    scene.program.click("push button", "Sign Out")
    accessible = scene.program.accessible()
    wait_until(lambda: accessible.shown("push button", "Sign In"), "the form")
    scene.shoot()


def day_detail(column, **options):
    def take(scene):
        scene.account(month(**options)).open(420, 1300)
        scene.shoot(scene.open_day(column))

    return take


def day_detail_search(scene):
    scene.account(month()).open()
    title = scene.open_day(14)
    wait_until(lambda: scene.desktop.window_titled(title), "the day")
    time.sleep(SETTLING)
    scene.desktop.type("ma", 20)
    scene.shoot(title)


PORTUGUESE = {"LANG": "pt_BR.UTF-8"}
# Without the second variable Qt would scale everything, not only the fonts.
LARGE_FONTS = {"QT_FONT_DPI": "144", "QT_ENABLE_HIGHDPI_SCALING": "0"}
HUGE_FONTS = {"QT_FONT_DPI": "192", "QT_ENABLE_HIGHDPI_SCALING": "0"}
PICTURES = {
    "sign-in": (sign_in, {}),
    "sign-in-again": (after_signing_out, {}),
    "sign-in-huge-fonts": (sign_in, HUGE_FONTS),
    "sign-in-refused": (refused, {}),
    **{f"introduction-{step}": (introduction(step), {}) for step in range(4)},
    **{f"introduction-{step}-pt": (introduction(step), PORTUGUESE) for step in range(4)},
    **{f"introduction-{step}-small": (introduction(step, 380, 500), LARGE_FONTS) for step in range(4)},
    "introduction-1-2x": (introduction(1, 840, 1400), {"QT_SCALE_FACTOR": "2"}),
    "dashboard": (dashboard(), {}),
    "dashboard-whole": (dashboard(420, 960), {}),
    "dashboard-narrow": (dashboard(380, 500), {}),
    "dashboard-wide": (dashboard(900, 960), {}),
    "dashboard-1080": (dashboard(420, 1080), {}),
    "dashboard-1440": (dashboard(420, 1440), {}),
    "dashboard-widest": (dashboard(1600, 1080), {}),
    "dashboard-crowded": (dashboard(420, 960, applications=40, days=30), {}),
    "dashboard-one-application": (dashboard(420, 960, applications=1, days=3), {}),
    "dashboard-nothing": (nothing_yet(), {}),
    "dashboard-nothing-whole": (nothing_yet(420, 1080), {}),
    "dashboard-offline": (offline, {}),
    "dashboard-large-fonts": (dashboard(420, 1300), LARGE_FONTS),
    "dashboard-large-fonts-narrow": (dashboard(380, 500), LARGE_FONTS),
    "dashboard-huge-fonts": (dashboard(), HUGE_FONTS),
    "dashboard-huge-fonts-narrow": (dashboard(380, 500), HUGE_FONTS),
    "dashboard-huge-fonts-wide": (dashboard(840, 1400), HUGE_FONTS),
    "dashboard-1.5x": (dashboard(630, 1440), {"QT_SCALE_FACTOR": "1.5"}),
    "dashboard-2x": (dashboard(840, 1400), {"QT_SCALE_FACTOR": "2"}),
    "dashboard-pt": (dashboard(420, 960), PORTUGUESE),
    "dashboard-de": (dashboard(420, 960), {"LANG": "de_DE.UTF-8"}),
    "dashboard-en-in": (dashboard(420, 960), {"LANG": "en_IN.UTF-8"}),
    "dashboard-ar": (dashboard(420, 960), {"LANG": "ar_EG.UTF-8"}),
    "dashboard-pointer": (day_under_the_pointer, {}),
    "dashboard-hour": (hour_under_the_pointer, {}),
    "dashboard-keyboard": (day_with_the_keyboard, {}),
    "dashboard-search": (search, {}),
    "dashboard-search-nothing": (search_without_a_hit, {}),
    "dashboard-paused": (paused(), {}),
    "dashboard-paused-huge-fonts": (paused(380, 500), HUGE_FONTS),
    "dashboard-not-saved": (not_saved(), {}),
    "dashboard-not-saved-small": (not_saved(380, 500), LARGE_FONTS),
    "devices": (devices, {}),
    "day-today": (day_detail(14), {}),
    "day-past": (day_detail(10), {}),
    "day-nothing": (day_detail(2, days=5), {}),
    "day-search": (day_detail_search, {}),
    "day-crowded": (day_detail(14, applications=40), {}),
    "day-large-fonts": (day_detail(14), LARGE_FONTS),
    "day-huge-fonts": (day_detail(14), HUGE_FONTS),
    "day-2x": (day_detail(14), {"QT_SCALE_FACTOR": "2"}),
    "day-pt": (day_detail(13), PORTUGUESE),
    "day-ar": (day_detail(14), {"LANG": "ar_EG.UTF-8"}),
}


def main():
    signal.signal(signal.SIGTERM, lambda *_: sys.exit(1))  # the desktop ends with us
    folder = pathlib.Path(sys.argv[1] if len(sys.argv) > 1 else TOP / "build" / "screenshots").absolute()
    wanted = sys.argv[2:] or list(PICTURES)
    if unknown := set(wanted) - PICTURES.keys():
        sys.exit(f"fernhollow: there is no picture {', '.join(sorted(unknown))}")
    folder.mkdir(parents=True, exist_ok=True)
    studio = Studio(folder)
    try:
        for name in wanted:
            take, changes = PICTURES[name]
            with studio.scene(name, **changes) as scene:
                take(scene)
    finally:
        studio.desktop.end()
    print(f"{len(wanted)} pictures in {folder}")


if __name__ == "__main__":
    main()
