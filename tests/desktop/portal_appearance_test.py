"""The appearance settings of the desktop portal."""
import math

import dbus
import pytest

from support.bus import BIN, Service
from support.lines import LineProcess
from support.waiting import wait_until

PROGRAM = BIN / "portal-appearance"
NAME, PATH = "org.freedesktop.portal.Desktop", "/org/freedesktop/portal/desktop"
SETTINGS = "org.freedesktop.portal.Settings"
APPEARANCE, GNOME = "org.freedesktop.appearance", "org.gnome.desktop.interface"
DARK_AND_CALM = """ret = {
  'org.freedesktop.appearance': {'color-scheme': dbus.UInt32(1), 'reduced-motion': dbus.UInt32(0),
                                 'accent-color': dbus.Struct((0.2, 0.4, 1.0), signature='ddd')},
  'org.gnome.desktop.interface': {'enable-animations': False, 'color-scheme': 'prefer-light'},
  'org.example.not-asked-for': {'color-scheme': dbus.UInt32(2)}}
for group in set(ret) - set(args[0]):
  del ret[group]"""


def portal(bus, code=DARK_AND_CALM, result="a{sa{sv}}"):
    return Service(bus.environment, NAME, PATH, [(SETTINGS, "ReadAll", "as", result, code)])


def change(service, group, key, value):
    service.signal(SETTINGS, "SettingChanged", "ssv", group, key, value)


def color(*channels):
    return dbus.Struct(channels, signature="ddd")


CHANGES = [  # and the expected output
    (APPEARANCE, "color-scheme", dbus.UInt32(2), "light 3366ff calm"),
    (APPEARANCE, "color-scheme", dbus.UInt32(7), "any 3366ff calm"),
    (APPEARANCE, "color-scheme", dbus.UInt32(1), "dark 3366ff calm"),
    (APPEARANCE, "accent-color", color(0.0, 1.0, 0.5), "dark 00ff80 calm"),
    (APPEARANCE, "accent-color", color(math.nan, 0.0, 0.0), "dark calm"),
    (APPEARANCE, "reduced-motion", dbus.UInt32(1), None),
    (GNOME, "enable-animations", True, None),
    (APPEARANCE, "reduced-motion", dbus.UInt32(0), "dark"),
    (GNOME, "color-scheme", dbus.UInt32(2), None),
    (GNOME, "enable-animations", False, "dark calm"),
    (APPEARANCE, "contrast", dbus.UInt32(1), "dark stark calm"),
    (GNOME, "gtk-theme", "HighContrastInverse", None),
    (APPEARANCE, "contrast", dbus.UInt32(0), None),
    (GNOME, "gtk-theme", "Adwaita", "dark calm"),
]


def test_is_read_when_the_portal_comes_and_comes_back_and_is_followed(bus):
    program = LineProcess(bus, PROGRAM)
    assert program.hear() == "any", "nothing is waited for"
    for _ in range(2):
        service = portal(bus)
        assert program.hear() == "dark 3366ff calm"
        for group, key, value, _ in CHANGES:
            change(service, group, key, value)
        expected = [said for *_, said in CHANGES if said]
        assert [program.hear() for _ in expected] == expected
        service.close()


@pytest.mark.parametrize("code, result", [("raise dbus.exceptions.DBusException('no')", ""), ("ret = 'nonsense'", "s")])
def test_is_the_defaults_where_the_portal_says_nothing_of_use_and_is_followed_all_the_same(bus, code, result):
    service = portal(bus, code, result)
    program = LineProcess(bus, PROGRAM)
    assert program.hear() == "any"

    def become_dark():
        change(service, APPEARANCE, "color-scheme", dbus.UInt32(1))
        return program.hear(0.1)

    assert wait_until(become_dark) == "dark"
