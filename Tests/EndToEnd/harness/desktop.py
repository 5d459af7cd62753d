"""A desktop on a virtual display: X server, private session bus, window manager, panel."""

import os
import pathlib
import re
import shutil
import signal
import subprocess
import sys
import tempfile
import time

from . import processes
from .waiting import wait_until

# Seconds that a hand needs to reach another window, so that no press falls into a change of focus.
HAND_MOVES = 0.2


class Desktop:
    """All of one desktop session, in a temporary folder that is its home.

    `host` is what shows status items: "watcher" (a StatusNotifierItem host), "tray" (a panel with an
    XEmbed tray) or None. A `time_zone` of None is that of this process. All processes end with end(),
    or when this process dies.
    """

    def __init__(self, host="watcher", time_zone="Europe/Berlin", size="1600x900"):
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="fernhollow-desktop-"))
        self._children = []
        self._size = size
        self.environment = self._bare_environment(time_zone)
        try:
            self._start_bus()
            self._start_display()
            if host == "tray":
                self.spawn(["tint2"])
                wait_until(lambda: self.windows("tint2"), "the panel")
            elif host == "watcher":
                self.start_watcher()
        except BaseException:
            self.end()
            raise

    def end(self):
        for child in reversed(self._children):
            processes.end(child)
        shutil.rmtree(self.folder, ignore_errors=True)

    def spawn(self, command, **options):
        """Starts a program of this desktop; its output goes to a log in the desktop's folder."""
        name = pathlib.Path(command[0]).name
        child = processes.start(command, self.environment, self.folder / f"{name}.log", **options)
        self._children.append(child)
        return child

    def run(self, *command, check=True):
        """Runs a short command on this desktop and returns what it printed."""
        done = processes.run([str(part) for part in command], self.environment, 60)
        if check and done.returncode != 0:
            raise AssertionError(f"{' '.join(map(str, command))}: {done.stderr.strip() or done.returncode}")
        return done.stdout.strip()

    def start_watcher(self):
        script = pathlib.Path(__file__).with_name("status_watcher.py")
        watcher = self.spawn([sys.executable, "-B", script], stdout=subprocess.PIPE, text=True)
        if watcher.stdout.readline().strip() != "ready":
            raise AssertionError("the status item watcher did not start")
        return watcher

    def lose_bus(self):
        self._bus.kill()
        self._bus.wait()

    def lose_display(self):
        """Kills the X server. To programs it looks like its crash, or a hard end of the session."""
        self._display.kill()
        self._display.wait()

    def freeze_display(self):
        """Stops the X server, which then takes requests and never answers."""
        self._display.send_signal(signal.SIGSTOP)

    def silence_bus(self):
        """Gives programs that start from now on a session bus that takes connections and never answers."""
        path = self.folder / "silent-bus"
        script = (
            "import socket, sys\n"
            "listener = socket.socket(socket.AF_UNIX)\n"
            "listener.bind(sys.argv[1])\n"
            "listener.listen()\n"
            "print('listening', flush=True)\n"
            "connections = []\n"
            "while True: connections.append(listener.accept())\n"
        )
        bus = self.spawn([sys.executable, "-c", script, path], stdout=subprocess.PIPE, text=True)
        bus.stdout.readline()
        self.environment["DBUS_SESSION_BUS_ADDRESS"] = f"unix:path={path}"

    # Windows

    def windows(self, application_class):
        """Ids of the visible windows whose class or instance is `application_class`."""
        pattern = f"^{application_class}$"
        return self.run("xdotool", "search", "--onlyvisible", "--class", pattern, check=False).split()

    def window_titled(self, title):
        found = self.run("xdotool", "search", "--onlyvisible", "--name", f"^{title}$", check=False)
        return found.split()[0] if found else None

    def focus(self, window):
        """Brings a window to the front and waits until it has the keyboard."""
        time.sleep(HAND_MOVES)
        self.run("xdotool", "windowactivate", window)
        wait_until(lambda: self.active_window() == int(window), f"window {window} in front")
        time.sleep(HAND_MOVES)

    def active_window(self):
        value = self._root_property("_NET_ACTIVE_WINDOW")
        return int(value.rsplit(" ", 1)[-1], 16) if value else None

    def click(self, x, y):
        self.run("xdotool", "mousemove", x, y, "click", 1)

    def screenshot(self, path):
        self.run("scrot", "--overwrite", path)

    def tray_icon(self):
        """The place of the only icon in the panel's tray: x, y, width, height; None while there is none."""
        for panel in self.windows("tint2"):
            tree = self.run("xwininfo", "-id", panel, "-tree", check=False)
            children = re.findall(r"^ +0x.* (\d+)x(\d+)\+\d+\+\d+ +\+(\d+)\+(\d+)$", tree, re.MULTILINE)
            for width, height, x, y in reversed(children):
                if int(width) > 1:
                    return int(x), int(y), int(width), int(height)
        return None

    def window_area(self, window):
        """The place of a window's content on the screen: x, y, width, height."""
        answer = self.run("xwininfo", "-id", window)
        fields = ("Absolute upper-left X", "Absolute upper-left Y", "Width", "Height")
        return tuple(int(re.search(rf"{field}: +(-?\d+)", answer)[1]) for field in fields)

    def picture(self, area, path=None):
        """A picture of an area of the screen, for comparison or, in a file, for people."""
        path = path or self.folder / "picture.png"
        self.run("scrot", "--overwrite", "--autoselect", ",".join(map(str, area)), path)
        return path.read_bytes()

    # Keyboard

    def type(self, text, milliseconds=8):
        """Types in the window that has the keyboard, one key every `milliseconds`."""
        self.run("xdotool", "type", "--delay", milliseconds, text)

    def start_typing(self, text, milliseconds=8):
        return self.spawn(["xdotool", "type", "--delay", milliseconds, text])

    def start_typist(self):
        """Starts a program that presses a letter for each line "key a" on its input."""
        return self.spawn(["xdotool", "-"], stdin=subprocess.PIPE, bufsize=0)

    def press(self, *keys):
        self.run("xdotool", "key", *keys)

    def hold(self, key, seconds):
        self.run("xdotool", "keydown", key)
        time.sleep(seconds)
        self.run("xdotool", "keyup", key)

    # What it is made of

    def _bare_environment(self, time_zone):
        environment = {
            "PATH": "/usr/local/bin:/usr/bin:/bin",
            "HOME": str(self.folder / "home"),
            "XDG_RUNTIME_DIR": str(self.folder / "runtime"),
            "XDG_DATA_DIRS": "/usr/local/share:/usr/share",
            "LANG": "C.UTF-8",
            "GSETTINGS_BACKEND": "memory",
            "GDK_BACKEND": "x11",
            "QT_QPA_PLATFORM": "xcb",
            "QT_LINUX_ACCESSIBILITY_ALWAYS_ON": "1",
        }
        time_zone = time_zone or os.environ.get("TZ")
        if time_zone:
            environment["TZ"] = time_zone
        for name, folder in home_folders(self.folder / "home").items():
            environment[name] = str(folder)
        for name in ("HOME", "XDG_RUNTIME_DIR"):
            pathlib.Path(environment[name]).mkdir(mode=0o700)
        for name in ("ASAN_OPTIONS", "LSAN_OPTIONS", "UBSAN_OPTIONS"):
            if name in os.environ:
                environment[name] = os.environ[name]
        return environment

    def _start_display(self):
        reading, writing = os.pipe()
        # Without -noreset the server resets itself whenever its last client disconnects.
        command = f"Xvfb -displayfd {writing} -screen 0 {self._size}x24 -noreset -nolisten tcp"
        self._display = self.spawn(command.split(), pass_fds=[writing])
        os.close(writing)
        with os.fdopen(reading) as answer:
            number = answer.readline().strip()
        if not number:
            raise AssertionError("the virtual display did not start: " + self._log("Xvfb"))
        self.environment["DISPLAY"] = f":{number}"
        self.spawn(["openbox"])
        wait_until(lambda: self._root_property("_NET_SUPPORTING_WM_CHECK"), "a window manager")

    def _start_bus(self):
        command = "dbus-daemon --session --nofork --nopidfile --print-address".split()
        self._bus = self.spawn(command, stdout=subprocess.PIPE, text=True)
        address = self._bus.stdout.readline().strip()
        if not address:
            raise AssertionError("the session bus did not start: " + self._log("dbus-daemon"))
        self.environment["DBUS_SESSION_BUS_ADDRESS"] = address

    def _root_property(self, name):
        answer = self.run("xprop", "-root", name, check=False)
        return answer if "#" in answer and not answer.endswith("0x0") else ""

    def _log(self, name):
        return (self.folder / f"{name}.log").read_text(errors="replace").strip()


def home_folders(home):
    """The XDG folders of a home, by the variable that names them."""
    return {
        "XDG_CONFIG_HOME": home / ".config",
        "XDG_DATA_HOME": home / ".local/share",
        "XDG_STATE_HOME": home / ".local/state",
        "XDG_CACHE_HOME": home / ".cache",
    }
