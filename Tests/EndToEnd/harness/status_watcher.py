"""A minimal desktop part for status items: a StatusNotifierItem watcher that is also a host.

A program of its own. Prints "ready" once it owns its name; ends when its bus does.
"""

import gi

gi.require_version("Gio", "2.0")
from gi.repository import Gio, GLib  # noqa: E402

NAME = "org.kde.StatusNotifierWatcher"
PATH = "/StatusNotifierWatcher"
INTERFACE = """
<node><interface name="org.kde.StatusNotifierWatcher">
  <method name="RegisterStatusNotifierItem"><arg type="s" direction="in"/></method>
  <method name="RegisterStatusNotifierHost"><arg type="s" direction="in"/></method>
  <property name="RegisteredStatusNotifierItems" type="as" access="read"/>
  <property name="IsStatusNotifierHostRegistered" type="b" access="read"/>
  <property name="ProtocolVersion" type="i" access="read"/>
  <signal name="StatusNotifierItemRegistered"><arg type="s"/></signal>
  <signal name="StatusNotifierItemUnregistered"><arg type="s"/></signal>
  <signal name="StatusNotifierHostRegistered"/>
</interface></node>
"""


class Watcher:
    """Keeps the registered items, each as "bus name" + "object path", until their owner disconnects."""

    def __init__(self, bus):
        self.bus = bus
        self.items = {}  # item -> unique name of its owner
        interface = Gio.DBusNodeInfo.new_for_xml(INTERFACE).interfaces[0]
        bus.register_object(PATH, interface, self.called, self.read, None)
        bus.signal_subscribe(
            "org.freedesktop.DBus",
            "org.freedesktop.DBus",
            "NameOwnerChanged",
            None,
            None,
            Gio.DBusSignalFlags.NONE,
            self.owner_changed,
        )

    def called(self, _bus, sender, _path, _interface, method, arguments, invocation):
        if method == "RegisterStatusNotifierItem":
            (service,) = arguments.unpack()
            item = sender + service if service.startswith("/") else service + "/StatusNotifierItem"
            self.items[item] = sender
            self.tell("StatusNotifierItemRegistered", item)
        invocation.return_value(None)

    def read(self, _bus, _sender, _path, _interface, name):
        if name == "RegisteredStatusNotifierItems":
            return GLib.Variant("as", list(self.items))
        if name == "IsStatusNotifierHostRegistered":
            return GLib.Variant("b", True)
        return GLib.Variant("i", 0)

    def owner_changed(self, _bus, _sender, _path, _interface, _signal, arguments):
        name, _, new_owner = arguments.unpack()
        if not new_owner:
            for item in [item for item, owner in self.items.items() if name in (owner, item.split("/")[0])]:
                del self.items[item]
                self.tell("StatusNotifierItemUnregistered", item)

    def tell(self, signal, item):
        self.bus.emit_signal(None, PATH, NAME, signal, GLib.Variant("(s)", (item,)))


def main():
    bus = Gio.bus_get_sync(Gio.BusType.SESSION)
    Watcher(bus)
    loop = GLib.MainLoop()
    Gio.bus_own_name_on_connection(
        bus, NAME, Gio.BusNameOwnerFlags.NONE, lambda *_: print("ready", flush=True), lambda *_: loop.quit()
    )
    loop.run()


if __name__ == "__main__":
    main()
