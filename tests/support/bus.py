"""Calls on a session bus, and mock services on it."""
import os
import pathlib
import subprocess

import dbus.bus
import dbusmock

from support.waiting import wait_until

ROOT = pathlib.Path(__file__).resolve().parents[2]
BIN = pathlib.Path(os.environ.get("SONVEL_BIN", ROOT / "build/release/bin"))
PROPERTIES = "org.freedesktop.DBus.Properties"


def run(*command, **options):
    """Starts a program that ends at the latest with this process."""
    return subprocess.Popen(["setpriv", "--pdeathsig", "KILL", *map(str, command)], **options)


def end(process):
    process.terminate()
    try:
        return process.wait(20)
    except subprocess.TimeoutExpired:
        process.kill()
        raise


def connect(environment):
    """A connection to the session bus of this environment."""
    return dbus.bus.BusConnection(environment["DBUS_SESSION_BUS_ADDRESS"])


def call(bus, name, path, interface, method, *arguments, signature=None):
    """The answer to a D-Bus call."""
    return bus.call_blocking(name, path, interface, method, signature, arguments, timeout=20)


class Service:
    """A mock service on a bus that records its calls; the bodies of its methods are Python, as in dbusmock."""

    def __init__(self, environment, name, path, methods, properties=None):
        self.bus, self.name, self.path = connect(environment), f"com.example.Service{os.urandom(4).hex()}", path
        self.process = run("/usr/bin/python3", "-m", "dbusmock", self.name, path, name, env=environment,
                           stdout=subprocess.DEVNULL)
        wait_until(lambda: self.bus.name_has_owner(self.name), what=name)
        self.mock = self.at(path)
        for interface, *method in methods:
            self.mock.AddMethod(interface, *method)
        if properties:
            self.mock.AddProperties(name, properties)
        # It gets its name last, so that nobody calls it unfinished.
        self.mock.AddMethod(name, "Serve", "", "", f"self.connection.request_name('{name}')")
        call(self.bus, self.name, path, name, "Serve")

    def at(self, path):
        return dbus.Interface(self.bus.get_object(self.name, path), dbusmock.MOCK_IFACE)

    def add(self, path, interface, methods):
        """Another object of this service."""
        self.mock.AddObject(path, interface, dbus.Dictionary({}, "sv"), methods)

    def calls(self, method, path=None):
        """The arguments of all calls of this method."""
        return [arguments for _, arguments in self.at(path or self.path).GetMethodCalls(method)]

    def signal(self, interface, name, signature="", *arguments, path=None):
        self.at(path or self.path).EmitSignal(interface, name, signature, dbus.Array(arguments, "v"))

    def close(self):
        """Leaves the bus."""
        end(self.process)
        wait_until(lambda: not self.bus.name_has_owner(self.name))
