"""Reads a program's windows from the accessibility bus, as a screen reader does."""

import dataclasses

from gi.repository import GLib

from .bus import call, connect

ROOT = "/org/a11y/atspi/accessible/root"
ACCESSIBLE = "org.a11y.atspi.Accessible"
STATE_SHOWING = 1 << 25
SCREEN = 0


@dataclasses.dataclass
class Node:
    """One widget as the accessibility bus describes it."""

    role: str
    name: str
    depth: int
    showing: bool
    service: str
    path: str


class AccessibleProgram:
    """The windows of one process. Every call asks the program again."""

    def __init__(self, desktop, process_id):
        self._process_id = process_id
        session = connect(desktop.environment["DBUS_SESSION_BUS_ADDRESS"])
        (address,) = call(session, "org.a11y.Bus", "/org/a11y/bus", "org.a11y.Bus", "GetAddress")
        self._bus = connect(address)
        self._service = None

    def nodes(self):
        """All widgets, depth first; none while the program is not on the bus."""
        try:
            self._service = self._service or self._find_service()
            return list(self._walk(self._service, ROOT, 0)) if self._service else []
        except GLib.Error:
            return []  # the tree changed during the read; the caller reads again

    def shown(self, role=None, name=None):
        """The visible widgets of a role, a name, or both."""
        return [
            node
            for node in self.nodes()
            if node.showing and role in (None, node.role) and name in (None, node.name)
        ]

    def texts(self):
        """The names of all visible widgets, in their order, and the contents of text fields."""
        found = []
        for node in self.nodes():
            if node.showing:
                found += [text for text in (node.name, self.content(node)) if text]
        return found

    def content(self, node):
        """The text in an editable widget; "" for others."""
        try:
            (text,) = self._ask(node, "org.a11y.atspi.Text", "GetText", GLib.Variant("(ii)", (0, -1)))
        except GLib.Error:
            return ""
        return text

    def centre(self, node):
        """The middle of a widget on the screen."""
        ((x, y, width, height),) = self._ask(
            node, "org.a11y.atspi.Component", "GetExtents", GLib.Variant("(u)", (SCREEN,))
        )
        return x + width // 2, y + height // 2

    def _ask(self, node, interface, method, arguments=None):
        return call(self._bus, node.service, node.path, interface, method, arguments)

    def _find_service(self):
        (children,) = call(self._bus, "org.a11y.atspi.Registry", ROOT, ACCESSIBLE, "GetChildren")
        for service, _ in children:
            arguments = GLib.Variant("(s)", (service,))
            dbus = "org.freedesktop.DBus"
            (owner,) = call(
                self._bus, dbus, "/org/freedesktop/DBus", dbus, "GetConnectionUnixProcessID", arguments
            )
            if owner == self._process_id:
                return service
        return None

    def _walk(self, service, path, depth):
        get = GLib.Variant("(ss)", (ACCESSIBLE, "Name"))
        (name,) = call(self._bus, service, path, "org.freedesktop.DBus.Properties", "Get", get)
        (role,) = call(self._bus, service, path, ACCESSIBLE, "GetRoleName")
        (states,) = call(self._bus, service, path, ACCESSIBLE, "GetState")
        yield Node(role, name, depth, bool(states[0] & STATE_SHOWING), service, path)
        (children,) = call(self._bus, service, path, ACCESSIBLE, "GetChildren")
        for child_service, child_path in children:
            if child_path != "/org/a11y/atspi/null":
                yield from self._walk(child_service, child_path, depth + 1)
