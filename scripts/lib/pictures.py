"""The scenes of scripts/pictures."""
import json
import os
import pathlib
import shutil
import socket
import struct
import subprocess
import sys
import tempfile
import time

import numpy

import contrast
from support.bus import BIN, run
from support.desktop import Application, Desktop
from support.waiting import wait_until

FOLDER = pathlib.Path("build/pictures")
ID = "com.quellmarsh.sonvel"
FIRST_BELOW_LIST = ("Reset all", "Alle zurücksetzen")
LABELLED = (29, 43, 83)  # labels, buttons and headings, as AT-SPI numbers them
XFCONFD = "/usr/lib/x86_64-linux-gnu/xfce4/xfconf/xfconfd"
NOBODY = 65534
XFCE_PANEL = """<?xml version="1.0"?><channel name="xfce4-panel" version="1.0">
<property name="configver" type="int" value="2"/>
<property name="panels" type="array"><value type="int" value="1"/>
<property name="dark-mode" type="bool" value="{dark}"/>
<property name="panel-1" type="empty"><property name="position" type="string" value="p=6;x=0;y=0"/>
<property name="length" type="uint" value="100"/><property name="position-locked" type="bool" value="true"/>
<property name="size" type="uint" value="28"/>
<property name="plugin-ids" type="array"><value type="int" value="1"/><value type="int" value="2"/></property>
</property></property>
<property name="plugins" type="empty">
<property name="plugin-1" type="string" value="separator"><property name="expand" type="bool" value="true"/></property>
<property name="plugin-2" type="string" value="systray"/></property></channel>"""
BACKGROUND = "40607f"
WAYBAR = {"height": 30, "modules-left": [], "modules-right": ["tray"], "tray": {"icon-size": 18}}
WAYBAR_STYLE = ("* {{ font-family: DejaVu Sans; font-size: 12px; }} window {{ background: {}; color: {}; }} "
                "#tray {{ padding: 0 8px; }}")
LONG = ("Symphony of the Northern Lights Media Library and Podcast Player", "Conference Room of the Whole Department",
        "Ein Musikprogramm mit einem wirklich langen Namen", "Reproductor de sonido con un nombre muy largo")


def read_picture(file):
    """The pixels of a picture, row by row: 0xRRGGBB."""
    text = subprocess.run(["ffmpeg", "-loglevel", "error", "-i", file, "-f", "image2pipe", "-c", "ppm", "-"], check=True,
                          stdout=subprocess.PIPE).stdout
    _, size, _, points = text.split(b"\n", 3)
    width, height = map(int, size.split())
    points = numpy.frombuffer(points, numpy.uint8).astype(int).reshape(height, width, 3)
    return points @ (1 << 16, 1 << 8, 1)


def players(count):
    """Applications with different tones, every fourth with an overlong name."""
    names = [f"{LONG[i // 4 % 4]} {i}" if i % 4 == 0 else f"Player {i}" for i in range(count)]
    return [Application(name, "pw-play", 300 + 70 * i, 0.05 + 0.05 * (i % 4), f"#{(i * 67 + 40) % 200 + 30:02x}6a{90 + i * 8:02x}")
            for i, name in enumerate(names)]


class Scene:
    """A desktop with playing applications and the program."""

    def __init__(self, count=4, dark=False, scale=1, **desktop):
        self.dark, self.scale = dark, scale
        self.desktop = Desktop(has_tray=False, scale=scale, **desktop)
        self.machine, self.screen = self.desktop.machine, self.desktop.screen
        self.environment = self.desktop.environment
        self.players = players(count)
        for player in self.players:
            self.desktop.play(player)

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.desktop.__exit__()

    def start(self, *arguments):
        self.program = self.machine.start(BIN / "sonvel", *arguments, environment=self.environment)
        if self.dark:
            self.screen.control("Sonvel")
            self.desktop.set_dark(True)

    def check_contrast(self, points, in_window=False, origin=(0, 0), icon=()):
        """Of all texts and symbols that a screen reader finds, and of the tray icon. origin: what places are relative to."""
        labels = [(name, *control.place(in_window)) for name, control in self.screen.shown()
                  if name and control.role in LABELLED]
        below = next(i for i, (name, *_) in enumerate(labels) if name in FIRST_BELOW_LIST)
        end = labels[below][2] - 12
        # what reaches under the lower part is scrolled out of sight
        seen = [label for i, label in enumerate(labels) if i >= below or label[2] + label[4] <= end]
        places = [(name, *(round(self.scale * length) for length in (x + origin[0], y + origin[1], width, height)))
                  for name, x, y, width, height in seen + [("tray icon", *place) for place in icon]]
        print(f"  lowest contrast of a text: {contrast.check(points, places):.2f}")

    def settle(self):
        """Waits for fades to end; meters move all the time, so there is no final state to wait for."""
        time.sleep(3)


class X11(Scene):
    def __init__(self, has_panel=True, **scene):
        super().__init__(**scene)
        self.has_panel = has_panel
        theme = "Adwaita:dark" if self.dark else "Adwaita"
        self.environment |= {"GTK_THEME": theme, "XDG_CURRENT_DESKTOP": "XFCE"}
        folder = self.machine.folder / "config/xfce4/xfconf/xfce-perchannel-xml"
        folder.mkdir(parents=True)
        (folder / "xfce4-panel.xml").write_text(XFCE_PANEL.format(dark=str(self.dark).lower()))
        self.machine.start(XFCONFD, environment=self.environment)
        self.machine.start("xfwm4", "--compositor=off", environment=self.environment)
        if has_panel:
            self.machine.start("xfce4-panel", environment=self.environment)
            time.sleep(3)

    def save(self, name):
        self.settle()
        self.desktop.display.save_picture(FOLDER / f"{name}.png")
        self.check_contrast(self.desktop.display.points().astype(int),
                            icon=[(1252, 2, 28, 24)] if self.has_panel else [])


class Pointer:
    """A mouse for a compositor that has none, which otherwise gives nobody clicks. Speaks Wayland's wire format, because
    the tools that can click unplug their mouse at once."""
    BUTTON = 0x110

    def __init__(self, compositor, width, height):
        self._size, self._compositor = (width, height), socket.socket(socket.AF_UNIX)
        self._compositor.connect(str(compositor))
        display, registry, end, manager, self._pointer = range(1, 6)
        self._send(display, 1, registry)
        self._send(display, 0, end)
        kind = b"zwlr_virtual_pointer_manager_v1\0"
        number = next(struct.unpack_from("=I", body)[0] for sender, body in self._events(end)
                      if sender == registry and kind in body)
        self._send(registry, 0, number, len(kind), *struct.unpack("=8I", kind), 1, manager)
        self._send(manager, 0, 0, self._pointer)

    def _send(self, receiver, request, *words):
        size = 8 + 4 * len(words)
        self._compositor.sendall(struct.pack(f"={2 + len(words)}I", receiver, size << 16 | request, *words))

    def _events(self, end):
        stream = self._compositor.makefile("rb")
        while True:
            sender, size = struct.unpack("=II", stream.read(8))
            yield sender, stream.read((size >> 16) - 8)
            if sender == end:
                return

    def move(self, x, y):
        self._do((1, x, y, *self._size))

    def click(self, x, y):
        self._do((1, x, y, *self._size), (2, self.BUTTON, 1), (2, self.BUTTON, 0))

    def _do(self, *actions):
        for request, *words in actions:
            self._send(self._pointer, request, 0, *words)
            self._send(self._pointer, 4)
            time.sleep(0.1)  # a person's click takes as long


class Wayland(Scene):
    """Sway refuses to run as root, so a root user runs it as another user."""

    def __init__(self, scale=1, has_bar=True, **scene):
        super().__init__(scale=scale, **scene)
        self.has_bar = has_bar
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="sonvel-sway-"))
        (self.folder / "config").write_text(
            f"output HEADLESS-1 resolution {1000 * scale}x{760 * scale} scale {scale} bg #{BACKGROUND} solid_color\n"
            "bar swaybar_command true\nxwayland disable\ndefault_border none\nseat * hide_cursor 100\n")
        user = []
        if os.geteuid() == 0:
            for path in (self.folder, self.folder / "config"):
                shutil.chown(path, NOBODY, NOBODY)
            user = ["setpriv", f"--reuid={NOBODY}", f"--regid={NOBODY}", "--clear-groups"]
        self.machine.start(*user, "/usr/bin/env", "-u", "DBUS_SESSION_BUS_ADDRESS", f"XDG_RUNTIME_DIR={self.folder}",
                           f"HOME={self.folder}", "WLR_BACKENDS=headless", "WLR_LIBINPUT_NO_DEVICES=1",
                           "WLR_RENDERER=pixman", "sway", "-c", self.folder / "config", name="sway")
        wait_until(lambda: list(self.folder.glob("sway-ipc*")), what="sway")
        socket_path = next(path for path in self.folder.glob("wayland-*") if not path.name.endswith(".lock"))
        self.environment |= {"WAYLAND_DISPLAY": str(socket_path), "SWAYSOCK": str(next(self.folder.glob("sway-ipc*"))),
                             "XDG_SESSION_TYPE": "wayland", "XDG_CURRENT_DESKTOP": "sway", "QT_QPA_PLATFORM": "wayland",
                             "QT_SCALE_FACTOR": "1", "GDK_BACKEND": "wayland"}
        self.environment.pop("DISPLAY")
        # A keyboard that stays: with the last one the focus goes too, and a program misses the first key of a new one.
        self.machine.start("wtype", "-s", "600000", "-k", "Escape", environment=self.environment)
        self.pointer = Pointer(socket_path, 1000, 760)
        self.pointer.move(500, 400)  # it is hidden some time after it was moved
        if has_bar:
            (self.folder / "waybar.json").write_text(json.dumps(WAYBAR))
            (self.folder / "waybar.css").write_text(WAYBAR_STYLE.format(*(("#202225", "#eee") if self.dark else ("#f0f0f0", "#111"))))
            self.machine.start("waybar", "-c", self.folder / "waybar.json", "-s", self.folder / "waybar.css",
                               environment=self.environment)
            time.sleep(3)

    def __exit__(self, *_):
        super().__exit__()
        shutil.rmtree(self.folder, ignore_errors=True)

    def run(self, *command):
        return subprocess.run(list(map(str, command)), env=self.environment, check=True, text=True, timeout=20,
                              stdout=subprocess.PIPE).stdout

    def save(self, name):
        """Returns where the panel is."""
        self.settle()
        self.run("grim", FOLDER / f"{name}.png")
        points = read_picture(FOLDER / f"{name}.png")
        window = self.window()
        place = window["rect"] if window else self.place_in(points)
        self.check_contrast(points, in_window=True, origin=(place["x"], place["y"]),
                            icon=[(-place["x"] + 965, -place["y"] + 2, 30, 26)] if self.has_bar else [])
        return place

    def place_in(self, points):
        """Of the only thing beside the bar: Sway tells windows alone."""
        top = WAYBAR["height"] * self.scale
        rows, columns = (points[top:] != int(BACKGROUND, 16)).nonzero()
        sides = columns.min(), top + rows.min(), columns.max() - columns.min() + 1, rows.max() - rows.min() + 1
        return {name: int(side) // self.scale for name, side in zip(("x", "y", "width", "height"), sides)}

    def window(self, program=ID):
        """A program's window in the compositor's tree; None without one."""
        def find(node):
            if node.get("app_id") == program:
                return node
            return next(filter(None, map(find, node.get("nodes", []) + node.get("floating_nodes", []))), None)
        return find(json.loads(self.run("swaymsg", "-t", "get_tree")))

    def is_open(self):
        return any(name == "Quit" for name, _ in self.screen.shown())

    def wait_for(self, is_open, why):
        wait_until(lambda: self.is_open() == is_open, what=f"the panel {'open' if is_open else 'closed'}: {why}")
        self.settle()  # and stays so

    def click_at(self, x, y):
        self.pointer.click(x, y)

    def click(self):
        """On the icon in the bar."""
        self.click_at(983, 15)

    def key(self, name):
        self.run("wtype", "-k", name)



def on_x11(name, dark=False, **more):
    with X11(dark=dark, **more) as scene:
        scene.start()
        scene.screen.control("Quit")
        scene.save(name)


def x11_tray_light():
    on_x11("x11-tray-light")


def x11_tray_dark():
    on_x11("x11-tray-dark", dark=True)


def x11_without_tray():
    on_x11("x11-without-tray", has_panel=False)


def german_twice_the_size_dark():
    with X11(dark=True, scale=2, has_panel=False) as scene:
        scene.environment |= {"LANG": "de_DE.UTF-8", "LANGUAGE": "de", "LC_CTYPE": "C.UTF-8"}
        scene.start()
        scene.screen.control("Beenden")
        scene.save("german-2x-dark")


def fifteen_applications():
    on_x11("fifteen-applications", count=15)


def permission_denied(name="permission-denied", dark=False):
    with X11(dark=dark) as scene:
        scene.environment |= scene.machine.restriction()
        scene.start()
        scene.screen.control("Grant Audio Access")
        scene.save(name)


def permission_denied_dark():
    permission_denied("permission-denied-dark", dark=True)


def wayland(name, **more):
    """Opened by a start; then all that opens and closes it."""
    with Wayland(**more) as scene:
        scene.start()
        scene.wait_for(True, "a start")
        window, place = scene.window(), scene.save(name)
        if window:  # built without the layer shell
            assert window["type"] == "floating_con" and window["focused"], window
        else:
            assert (place["x"] + place["width"], place["y"]) == (1000, WAYBAR["height"]), f"not at the tray: {place}"
        print("  a floating window" if window else "  at the tray")
        scene.key("Escape")
        wait_until(lambda: not scene.is_open(), what="the panel closed: Escape")
        scene.click()
        scene.wait_for(True, "a click right after Escape")
        scene.click()
        scene.wait_for(False, "a second click")
        scene.click()
        scene.wait_for(True, "a click after a click")
        scene.click_at(100, 700)
        scene.wait_for(False, "a click on the desktop")
        scene.click()
        scene.wait_for(True, "a click after a click on the desktop")
        scene.machine.start("foot", "-a", "elsewhere", "sleep", "600", environment=scene.environment)
        wait_until(lambda: scene.window("elsewhere"), what="another window")
        scene.wait_for(False, "a new window has the focus")
        scene.click()
        scene.wait_for(True, "a click beside a new window")
        scene.click_at(100, 700)
        scene.wait_for(False, "a click on another window")
        assert scene.program.poll() is None


def wayland_tray_light():
    wayland("wayland-tray-light")


def wayland_tray_dark_2x():
    wayland("wayland-tray-dark-2x", dark=True, scale=2)


def wayland_without_tray():
    """Closing its window keeps the volumes, and a second start opens it again."""
    with Wayland(has_bar=False, count=2) as scene:
        scene.start()
        wait_until(scene.window, what="the window")
        player = scene.players[1]
        scene.desktop.set_volume(player, 50)
        scene.save("wayland-without-tray")
        scene.run("swaymsg", f"[app_id={ID}]", "kill")
        wait_until(lambda: not scene.window(), what="no window")
        scene.desktop.hear(player)
        assert scene.machine.start(BIN / "sonvel", environment=scene.environment).wait(20) == 0
        wait_until(scene.window, what="the window again")
        assert scene.program.poll() is None
        scene.desktop.press("Quit")
        assert scene.program.wait(20) == 0
        player.gain = 1
        scene.desktop.hear(player)


def update_states():
    """The window of an update; its test says where each text is."""
    for look in ("light", "dark"):
        assert run(BIN / "ui_test", "--gtest_filter=UpdateWindowTest.shows*",
                   env=os.environ | {"SONVEL_PICTURES": f"{FOLDER.resolve()}/update-{look}-"}).wait() == 0
        for places in sorted(FOLDER.glob(f"update-{look}-*.json")):
            lowest = contrast.check(read_picture(places.with_suffix(".png")), json.loads(places.read_text()))
            print(f"  {places.stem}: lowest contrast of a text: {lowest:.2f}")
            places.unlink()


SCENES = (x11_tray_light, x11_tray_dark, x11_without_tray, german_twice_the_size_dark, fifteen_applications,
          permission_denied, permission_denied_dark, wayland_tray_light, wayland_tray_dark_2x, wayland_without_tray, update_states)


def main():
    FOLDER.mkdir(parents=True, exist_ok=True)
    wanted = sys.argv[1:]
    failed = False
    for scene in SCENES:
        if wanted and scene.__name__ not in wanted:
            continue
        try:
            scene()
            print(f"{scene.__name__}: as it should be", flush=True)
        except AssertionError as error:
            failed = True
            print(f"{scene.__name__}: {error}", flush=True)
    return failed


if __name__ == "__main__":
    sys.exit(main())
