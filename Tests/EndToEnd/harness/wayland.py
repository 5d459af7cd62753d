"""A Wayland desktop without a screen, and a counting service that a test drives."""

import os
import pathlib
import re
import shutil
import socket
import struct
import threading
import time

from gi.repository import GLib

from .bus import call, connect
from .desktop import Desktop, HAND_MOVES
from .waiting import wait_until


class WaylandDesktop(Desktop):
    """A compositor on a screen in memory. Windows have names here instead of numbers."""

    environment_of_session: dict

    def _start_display(self):
        self.environment.update(
            {"XDG_SESSION_TYPE": "wayland", "QT_QPA_PLATFORM": "wayland", "GDK_BACKEND": "wayland"}
        )
        self.environment.update(self.environment_of_session)
        self.runtime = pathlib.Path(self.environment["XDG_RUNTIME_DIR"])
        self._start_compositor()
        sockets = lambda: [path for path in self.runtime.glob("wayland-*") if path.suffix != ".lock"]
        self.environment["WAYLAND_DISPLAY"] = wait_until(sockets, "the compositor")[0].name


class SwayDesktop(WaylandDesktop):
    """Stands for the desktops that are built on wlroots. A window's name is its app_id."""

    environment_of_session = {
        "XDG_CURRENT_DESKTOP": "sway",
        "WLR_BACKENDS": "headless",
        "WLR_RENDERER": "pixman",
        "WLR_LIBINPUT_NO_DEVICES": "1",
        "LIBSEAT_BACKEND": "noop",
    }

    def _start_compositor(self):
        configuration = self.folder / "sway.conf"
        configuration.write_text(f"output HEADLESS-1 resolution {self._size}\n")
        self.spawn([*self._as_plain_user(), "sway", "--config", configuration])
        wait_until(lambda: list(self.runtime.glob("sway-ipc.*")), "the compositor")
        self.environment["SWAYSOCK"] = str(next(self.runtime.glob("sway-ipc.*")))

    def _as_plain_user(self):
        """sway does not run as root."""
        if os.geteuid() != 0:
            return []
        self.folder.chmod(0o711)
        shutil.chown(self.runtime, "nobody", "nogroup")
        return ["setpriv", "--reuid=nobody", "--regid=nogroup", "--clear-groups"]

    def windows(self, application_class):
        tree = self.run("swaymsg", "--raw", "--type", "get_tree")
        return re.findall(rf'"app_id": *"({re.escape(application_class)})"', tree)

    def focus(self, window):
        """Brings the application to the front at once; a hand then needs a moment until it types."""
        self.run("swaymsg", f'[app_id="{window}"] focus')
        time.sleep(HAND_MOVES)


class KWinDesktop(WaylandDesktop):
    """KDE Plasma's compositor. A window's name is its class."""

    environment_of_session = {"XDG_CURRENT_DESKTOP": "KDE"}
    program = shutil.which("kwin_wayland")

    def _start_compositor(self):
        # A copy lacks the file's capability, which containers refuse.
        kwin = shutil.copy(self.program, self.folder / "kwin_wayland")
        self.spawn([kwin, "--virtual", "--no-lockscreen", "--no-global-shortcuts", "--socket", "wayland-kwin"])
        wait_until(self._is_on_the_bus, "KWin on the bus")

    def _is_on_the_bus(self):
        bus = connect(self.environment["DBUS_SESSION_BUS_ADDRESS"])
        name = GLib.Variant("(s)", ("org.kde.KWin",))
        return call(bus, "org.freedesktop.DBus", "/", "org.freedesktop.DBus", "NameHasOwner", name)[0]

    def windows(self, application_class):
        """By KWin's own search, which finds windows by class and title."""
        (found,) = self._search("Match", "(s)", application_class)
        return [window[0] for window in found]

    def focus(self, window):
        self._search("Run", "(ss)", self.windows(window)[0], "")
        time.sleep(HAND_MOVES)

    def _search(self, method, signature, *arguments):
        bus = connect(self.environment["DBUS_SESSION_BUS_ADDRESS"])
        given = GLib.Variant(signature, arguments)
        return call(bus, "org.kde.KWin", "/WindowsRunner", "org.kde.krunner1", method, given)


class Keytap:
    """The key-blind service as the program sees it: a socket from which numbers come.

    As the real one it gathers presses, and sends them at the end of a slot or when it is asked.
    """

    def __init__(self, path):
        self.path = path
        self._lock = threading.Lock()
        self._gathered = 0
        self._peer = None
        self._listener = socket.socket(socket.AF_UNIX, socket.SOCK_SEQPACKET)
        self._listener.bind(str(path))
        self._listener.listen()
        threading.Thread(target=self._serve, daemon=True).start()
        threading.Thread(target=self._send_in_slots, daemon=True).start()

    def press(self, count):
        with self._lock:
            self._gathered += count

    def wait_for_program(self):
        wait_until(lambda: self._peer, "the program at the service")

    def refuse(self, reason):
        """Ends the connection with a refusal, as for a session that is not local."""
        with self._lock:
            self._peer.send(bytes([reason]))
        wait_until(lambda: not self._peer, "the program leaving")

    def end(self):
        self._listener.close()
        os.unlink(self.path)

    def _serve(self):
        while True:
            try:
                peer, _ = self._listener.accept()
            except OSError:
                return  # the end of the test
            self._peer = peer
            with peer:
                while packet := peer.recv(16):
                    if len(packet) == 1:  # else it is how keys repeat
                        self._send(also_nothing=True)
                self._peer = None

    def _send_in_slots(self):
        while self._listener.fileno() >= 0:
            time.sleep(0.1)
            self._send()

    def _send(self, also_nothing=False):
        with self._lock:
            if self._peer and (self._gathered or also_nothing):
                self._peer.send(struct.pack("Q", self._gathered))
                self._gathered = 0
