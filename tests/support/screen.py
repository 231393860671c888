"""A virtual display: its pixels, and its contents as a screen reader sees them."""
import pathlib
import subprocess
import tempfile

import dbus
import dbus.bus
import numpy

from support.bus import PROPERTIES, call, connect, end, run
from support.waiting import wait_until

ACCESSIBLE = "org.a11y.atspi.Accessible"
ACTION = "org.a11y.atspi.Action"
COMPONENT = "org.a11y.atspi.Component"
VALUE = "org.a11y.atspi.Value"
SHOWING, VISIBLE = 1 << 25, 1 << 30


class Display:
    """A virtual display without a window manager; black where there is no window."""

    def __init__(self):
        self._folder = tempfile.TemporaryDirectory(prefix="sonvel-display-")
        self.process = run("Xvfb", "-displayfd", "1", "-screen", "0", "1280x1024x24", "-nolisten", "tcp", "-noreset",
                           "-fbdir", self._folder.name, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True)
        self.name = ":" + self.process.stdout.readline().strip()
        assert self.name != ":", "no virtual display"
        file = pathlib.Path(self._folder.name) / "Xvfb_screen0"
        header = numpy.fromfile(file, ">u4", 25)
        width, height, colors = header[4], header[5], header[19]
        self._points = numpy.memmap(file, "<u4", "r", int(header[0] + 12 * colors), (height, width))

    def points(self):
        """The pixels of the whole screen, row by row: 0xRRGGBB."""
        return self._points & 0xffffff

    def is_black(self):
        return not self.points().any()

    def is_painted(self):
        """Whether a window with contents is visible."""
        lit = self.points()
        lit = lit[lit != 0]
        return lit.size > 0 and bool((lit != lit[0]).any())

    def save_picture(self, file):
        """The bounds of everything that is not black."""
        points = self.points()
        rows, columns = numpy.nonzero(points.any(1))[0], numpy.nonzero(points.any(0))[0]
        points = points[rows[0]:rows[-1] + 1, columns[0]:columns[-1] + 1]
        subprocess.run(["ffmpeg", "-loglevel", "error", "-y", "-f", "rawvideo", "-pixel_format", "bgr0", "-video_size",
                        f"{points.shape[1]}x{points.shape[0]}", "-i", "-", str(file)], input=points.tobytes(), check=True)

    def close(self):
        end(self.process)
        self._folder.cleanup()


class Control:
    """One control on the screen. It may disappear at any time: then each call raises dbus.DBusException."""

    def __init__(self, bus, name, path):
        self._at = bus, name, path

    def _get(self, interface, name):
        return call(*self._at, PROPERTIES, "Get", interface, name, signature="ss")

    @property
    def name(self):
        return str(self._get(ACCESSIBLE, "Name"))

    @property
    def value(self):
        return float(self._get(VALUE, "CurrentValue"))

    @value.setter
    def value(self, value):
        call(*self._at, PROPERTIES, "Set", VALUE, "CurrentValue", dbus.Double(value), signature="ssv")

    @property
    def role(self):
        """Its number in AT-SPI."""
        return int(call(*self._at, ACCESSIBLE, "GetRole"))

    def place(self, in_window):
        """x, y, width and height, in its window or on the screen."""
        return [int(number) for number in call(*self._at, COMPONENT, "GetExtents", int(in_window), signature="u")]

    def is_shown(self):
        states = call(*self._at, ACCESSIBLE, "GetState")[0]
        return bool(states & SHOWING and states & VISIBLE)

    def children(self):
        return [Control(self._at[0], str(name), path) for name, path in call(*self._at, ACCESSIBLE, "GetChildren")]

    def press(self):
        names = [action[0] for action in call(*self._at, ACTION, "GetActions")]
        call(*self._at, ACTION, "DoAction", names.index("Press"), signature="i")


class ScreenReader:
    """Reads and operates the windows of a program through the accessibility bus."""

    def __init__(self, environment, program):
        bus = connect(environment)
        wait_until(lambda: bus.name_has_owner("org.a11y.Bus"), what="the accessibility bus")
        address = call(bus, "org.a11y.Bus", "/org/a11y/bus", "org.a11y.Bus", "GetAddress")
        self._desktop = Control(dbus.bus.BusConnection(address), "org.a11y.atspi.Registry",
                                "/org/a11y/atspi/accessible/root")
        self._program = program

    def shown(self):
        """The names of everything visible in reading order, with their controls."""
        found = []

        def look_below(control):
            for child in control.children():
                try:
                    if child.is_shown():  # the tree also has hidden objects
                        found.append((child.name, child))
                    look_below(child)
                except dbus.DBusException:  # it has just disappeared
                    pass

        for program in self._desktop.children():
            try:
                if program.name == self._program:
                    look_below(program)
            except dbus.DBusException:
                pass
        return found

    def control(self, name, within=20):
        """Waits for the first visible control of this name."""
        def find():
            return next((control for shown, control in self.shown() if shown == name), None)
        try:
            return wait_until(find, within)
        except AssertionError:
            raise AssertionError(f"no {name!r} on the screen, but {[name for name, _ in self.shown()]}") from None

    def wait_until_gone(self, name):
        wait_until(lambda: all(shown != name for shown, _ in self.shown()), 20, f"{name!r} gone from the screen")
