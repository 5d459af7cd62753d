"""Calls over a message bus."""

import gi

gi.require_version("Gio", "2.0")
from gi.repository import Gio  # noqa: E402


def connect(address):
    flags = Gio.DBusConnectionFlags.AUTHENTICATION_CLIENT | Gio.DBusConnectionFlags.MESSAGE_BUS_CONNECTION
    return Gio.DBusConnection.new_for_address_sync(address, flags, None, None)


def call(bus, service, path, interface, method, arguments=None):
    answer = bus.call_sync(
        service, path, interface, method, arguments, None, Gio.DBusCallFlags.NONE, 10_000, None
    )
    return answer.unpack()
