"""The real program on a machine of its own, worked by its D-Bus interface."""

import dbus
import dbus.bus

from support.machine import BINARIES
from support.waiting import wait_until

NAME = "com.quellmarsh.sonvel"
PATH = "/com/quellmarsh/sonvel/Mixer"


class RunningProgram:
    """Its panel is closed, unless it is watched, which is the same to it as an open one."""

    def __init__(self, machine, is_watched=False):
        self.process = machine.start(BINARIES / "sonvel", "--background", "--verbose", name="sonvel",
                                     environment={"QT_QPA_PLATFORM": "offscreen"})
        bus = dbus.bus.BusConnection(machine.environment["DBUS_SESSION_BUS_ADDRESS"])
        wait_until(lambda: bus.name_has_owner(NAME), what="the program")
        self._object = bus.get_object(NAME, PATH)
        wait_until(self._answers, what="an answer of the program")
        if is_watched:
            self.call("Watch", True)

    def _answers(self):
        try:
            self._object.Introspect(dbus_interface="org.freedesktop.DBus.Introspectable")
            return True
        except dbus.DBusException:
            return False

    def call(self, method, *arguments):
        return getattr(self._object, method)(*arguments, dbus_interface=NAME + ".Mixer1")

    def rows(self):
        return self._object.Get(NAME + ".Mixer1", "Applications", dbus_interface="org.freedesktop.DBus.Properties")

    def quit(self):
        self.process.terminate()
        self.process.wait(20)
