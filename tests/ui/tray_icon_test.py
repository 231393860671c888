"""The icon of the real program on a simulated machine, as a desktop's tray sees it, and what stands in for it."""
from support.bus import BIN
from support.screen import Display
from support.tray import Tray
from support.waiting import wait_until


def test_is_there_while_a_host_shows_icons(bus):
    screen = Display()
    tray = Tray(bus.environment, has_host=False)
    program = bus.start(BIN / "sonvel", "--simulated", environment={"DISPLAY": screen.name, "QT_QPA_PLATFORM": "xcb"})
    try:
        wait_until(lambda: not screen.is_black(), what="the window that stands in")
        assert not tray.icons(), "a watcher alone shows nothing"
        tray.set_host(True)
        tray.icon()
        tray.set_host(False)
        wait_until(lambda: not tray.icons(), what="no icon")
        tray.close()

        tray = Tray(bus.environment)
        icon = tray.icon()
        assert (icon.get("Title"), icon.get("ToolTip")[2]) == ("Sonvel", "Sonvel")
        assert any(icon.get("IconPixmap")[-1][2]), "it has no picture"
        icon.click()
        wait_until(screen.is_black, what="the closed window")
        icon.choose("Open Sonvel")
        wait_until(lambda: not screen.is_black(), what="the panel")
        icon.choose("Quit")
        assert program.wait(20) == 0
    finally:
        program.kill()
        tray.close()
        screen.close()
