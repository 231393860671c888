"""A whole virtual desktop: a machine with sound, a display, a tray, settings and a screen reader."""
from dataclasses import dataclass

import dbus

from support.bus import BIN, Service, end
from support.machine import Machine
from support.screen import Display, ScreenReader
from support.tray import Tray

PROGRAM_NAME = "Sonvel"  # also the title of its window
SETTINGS, APPEARANCE = "org.freedesktop.portal.Settings", "org.freedesktop.appearance"
READ_ALL = f"ret = {{'{APPEARANCE}': {{'color-scheme': dbus.UInt32(2)}}}}"
ICON = ('<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 48 48"><rect x="3" y="3" width="42" height="42" rx="11" '
        'fill="{}"/><path d="M19 14v20l16-10z" fill="#ffffff"/></svg>')


@dataclass
class Application:
    """An installed media player that plays a tone on both channels."""
    name: str
    program: str
    frequency: int
    amplitude: float
    color: str
    process: object = None
    gain: float = 1.0  # expected gain
    is_muted: bool = False
    sink: str = "Speakers"

    @property
    def volume(self):
        return self.name + " volume"

    @property
    def level(self):
        return 0 if self.is_muted else self.amplitude * self.gain


def example_players():
    """One application of each kind, each with its own tone and colour."""
    return [Application("Records", "pw-play", 1000, 0.2, "#3465a4"),
            Application("Jukebox", "paplay", 1700, 0.15, "#c4572a"),
            Application("Cinema", "ffplay", 2600, 0.1, "#5c8a3a")]


class Desktop:
    def __init__(self, has_tray=True, is_read=True, scale=1.0, **machine):
        """is_read: with a screen reader, for which programs do extra work. Other arguments: see Machine."""
        self.display = Display()
        self.machine = Machine(**machine)
        self.environment = self.machine.environment | {"DISPLAY": self.display.name, "QT_QPA_PLATFORM": "xcb",
                                                       "QT_SCALE_FACTOR": str(scale)}
        self._accessibility = None
        if is_read:
            self.environment["QT_LINUX_ACCESSIBILITY_ALWAYS_ON"] = "1"
            # It ends its bus only if it is terminated politely.
            self._accessibility = self.machine.start("setpriv", "--pdeathsig", "TERM",
                                                     "/usr/libexec/at-spi-bus-launcher", "--launch-immediately")
            self.screen = ScreenReader(self.environment, PROGRAM_NAME)
        self._portal = Service(self.environment, "org.freedesktop.portal.Desktop", "/org/freedesktop/portal/desktop",
                               [(SETTINGS, "ReadAll", "as", "a{sa{sv}}", READ_ALL)])
        self.tray = Tray(self.environment) if has_tray else None

    def __enter__(self):
        return self

    def __exit__(self, *_):
        for service in filter(None, (self.tray, self._portal)):
            end(service.process)
        if self._accessibility:
            end(self._accessibility)
        self.machine.end()
        self.display.close()

    def start(self, program=BIN / "sonvel", *arguments):
        """Starts Sonvel; behind its icon if there is a tray, as at login."""
        return self.machine.start(program, *arguments, *["--background"] * bool(self.tray),
                                  environment=self.environment)

    def set_dark(self, is_dark):
        self._portal.signal(SETTINGS, "SettingChanged", "ssv", APPEARANCE, "color-scheme", dbus.UInt32(2 - is_dark))

    def press(self, name):
        self.screen.control(name).press()

    def set_volume(self, application, percent):
        self.screen.control(application.volume).value = percent
        application.gain = percent / 100

    def play(self, application):
        """Installs the application if needed, and starts it."""
        data = self.machine.folder / "data"
        program = self.machine.copy_program(application.program, application.name.lower())
        icon = data / f"{application.name}.svg"
        icon.write_text(ICON.format(application.color))
        (data / "applications").mkdir(exist_ok=True)
        (data / "applications" / f"org.example.{application.name}.desktop").write_text(
            f'[Desktop Entry]\nType=Application\nName={application.name}\nExec="{program}" %U\nIcon={icon}\n')
        application.process = self.machine.play(application.program, application.frequency, application.amplitude,
                                                application.name.lower())

    def hear(self, application, within=20):
        """Waits until the application is heard at its sink and level."""
        self.machine.sink(application.sink).wait_for_tone(application.frequency, application.level, within)
