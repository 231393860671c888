"""The program's icon in the tray, as the tray sees it, and what stands in for it."""
import pytest

from support.bus import BIN, end, run
from support.screen import Display
from support.tray import Tray
from support.waiting import wait_until


@pytest.fixture
def screen():
    display = Display()
    yield display
    display.close()


@pytest.fixture
def program(bus, screen, tmp_path):
    """It opens the panel on a simulated machine."""
    process = run(BIN / "sonvel", "--simulated",
                  env=bus.environment | {"DISPLAY": screen.name, "QT_QPA_PLATFORM": "xcb", "XDG_RUNTIME_DIR": tmp_path})
    yield process
    end(process)


def test_does_what_its_icon_is_asked_for(bus, program, screen):
    tray = Tray(bus.environment)
    icon = tray.icon()
    assert (icon.get("Title"), icon.get("ToolTip")[2]) == ("Sonvel", "Sonvel")
    for open_or_close in (icon.click, icon.click, lambda: icon.choose("Open Sonvel"), icon.click):
        was_black = screen.is_black()
        open_or_close()
        wait_until(lambda: screen.is_black() != was_black)
    icon.choose("Quit")
    assert program.wait(20) == 0
    tray.close()


def test_is_a_window_until_a_host_shows_icons(bus, program, screen):
    tray = Tray(bus.environment, has_host=False)
    wait_until(lambda: not screen.is_black(), what="the window that stands in")
    assert not tray.icons(), "a watcher alone shows nothing"
    for is_closed in (True, False):
        tray.set_host(True)
        tray.icon()
        tray.set_host(False)
        wait_until(lambda: not tray.icons(), what="no icon")
    tray.close()
    tray = Tray(bus.environment)
    tray.icon()
    tray.close()
    assert program.poll() is None
