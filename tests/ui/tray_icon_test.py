"""The icon of the real program on a simulated machine, as a tray sees it, and the window that replaces it
without a tray."""
from support.bus import BIN
from support.screen import Display
from support.tray import Tray
from support.waiting import wait_until


def test_is_there_while_a_host_shows_icons(bus, tmp_path):
    screen = Display()
    tray = Tray(bus.environment, has_host=False)
    program = bus.start(BIN / "sonvel", "--simulated", environment={
        "DISPLAY": screen.name, "QT_QPA_PLATFORM": "xcb", "XDG_CONFIG_HOME": str(tmp_path)})
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
        loud = icon.get("IconPixmap")
        assert any(loud[-1][2]), "it has no picture"

        def wait_for_tool_tip(text):
            wait_until(lambda: icon.get("ToolTip")[2:] == ("Sonvel", text), what=text)

        wait_for_tool_tip("Speakers: 50%")
        for turn in (240, -60, -60):  # the last two are one notch
            icon.do("Scroll", turn, "vertical", signature="is")
        wait_for_tool_tip("Speakers: 55%")
        icon.do("SecondaryActivate", 0, 0, signature="ii")
        wait_for_tool_tip("Speakers: muted")
        assert icon.get("IconPixmap") != loud
        icon.choose("Mute")
        wait_for_tool_tip("Speakers: 55%")
        entry = tmp_path / "autostart/com.quellmarsh.sonvel.desktop"
        icon.choose("Start at login")
        wait_until(entry.exists, what="the entry that starts it at login")
        assert "sonvel\" --background" in entry.read_text()
        icon.choose("Start at login")
        wait_until(lambda: not entry.exists(), what="no such entry")
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
