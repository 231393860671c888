"""Calls on a session bus, and services on it that answer as they are told."""
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
    """Starts a program that ends with this process at the latest."""
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
    """A service on a bus that answers as it is told and keeps what it was asked; what its methods return is written in
    Python, as dbusmock takes it."""

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
        # Under its own name only now, so that nobody meets it unfinished.
        self.mock.AddMethod(name, "Serve", "", "", f"self.connection.request_name('{name}')")
        call(self.bus, self.name, path, name, "Serve")

    def at(self, path):
        return dbus.Interface(self.bus.get_object(self.name, path), dbusmock.MOCK_IFACE)

    def add(self, path, interface, methods):
        """Another object of this service."""
        self.mock.AddObject(path, interface, dbus.Dictionary({}, "sv"), methods)

    def calls(self, method, path=None):
        """The arguments of each call of this method so far."""
        return [arguments for _, arguments in self.at(path or self.path).GetMethodCalls(method)]

    def signal(self, interface, name, signature="", *arguments, path=None):
        self.at(path or self.path).EmitSignal(interface, name, signature, dbus.Array(arguments, "v"))

    def close(self):
        """It leaves the bus."""
        end(self.process)
        wait_until(lambda: not self.bus.name_has_owner(self.name))
