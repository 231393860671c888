"""The icon in the tray, as the tray sees it."""
import pytest

from support.bus import BIN
from support.screen import Display
from support.tray import Tray
from support.waiting import wait_until

PROGRAM = BIN / "tray-icon"
BLUE, RED = b"\xff\x00\x00\xff", b"\xff\xff\x00\x00"


@pytest.fixture
def start(talk):
    display = Display()
    yield lambda **more: talk(PROGRAM, environment={"DISPLAY": display.name, "QT_QPA_PLATFORM": "xcb"} | more)
    display.close()


def test_is_named_and_does_what_it_is_asked_for(bus, start):
    tray = Tray(bus.environment)
    program = start()
    assert [program.hear(), program.hear()] == ["unknown", "shown"]
    icon = tray.icon()
    assert (icon.get("Title"), icon.get("ToolTip")[2]) == ("Sonvel", "Sonvel")
    assert set(icon.menu()) == {"Open Sonvel", "Quit"}
    assert icon.color() == BLUE
    icon.click()
    assert program.hear() == "clicked"
    assert icon.color() == RED, "what it was given meanwhile"
    for label, said in {"Open Sonvel": "open", "Quit": "quit"}.items():
        icon.choose(label)
        assert program.hear() == said
    tray.close()


def test_comes_with_the_tray_and_goes_with_it(bus, start):
    program = start()
    assert [program.hear(), program.hear()] == ["unknown", "not shown"]
    for leaves_with_tray, color in ((True, BLUE), (False, RED), (True, RED)):
        tray = Tray(bus.environment, has_host=False)
        assert program.hear(0.3) is None, "a watcher alone shows nothing"
        tray.set_host(True)
        assert program.hear() == "shown"
        icon = tray.icon()
        assert icon.color() == color
        icon.click()
        assert program.hear() == "clicked"
        if not leaves_with_tray:
            tray.set_host(False)
            assert program.hear() == "not shown"
            wait_until(lambda: not tray.icons(), what="no icon")
        tray.close()
        if leaves_with_tray:
            assert program.hear() == "not shown"


def test_is_not_shown_without_a_bus(start):
    assert start(DBUS_SESSION_BUS_ADDRESS="unix:path=/nonexistent").hear() == "not shown"
