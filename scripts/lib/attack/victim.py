"""The program under attack."""
import ctypes
import json
import os
import shutil
import signal
import subprocess
import time
from pathlib import Path

import dbus
from support.bus import connect
from support.desktop import Desktop
from support.waiting import wait_until

from attack.maker import Maker

NAME = "com.quellmarsh.sonvel"
HEADINGS = ("Sonvel ", "Looking for", "The new version", "The package", "Downloading", "Verifying", "Installing")
X11, XTEST = ctypes.CDLL("libX11.so.6"), ctypes.CDLL("libXtst.so.6")
RETURN = 0xff0d


class Victim:
    """Runs on a desktop of its own; installed as a single file of its user by default."""

    def __init__(self, programs):
        self.programs, self.maker, self.desktop = Path(programs), Maker(), Desktop()
        self.folder, self.process = self.desktop.machine.folder, None
        self.program = self.folder / "prefix/bin/sonvel"

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.desktop.__exit__()

    # How it is installed and started

    def install(self, prefix="prefix", guardian="", **information):
        """guardian: the folder below the prefix, if the guardian is a separate file."""
        self.program = self.folder / prefix / "bin/sonvel"
        self.program.parent.mkdir(parents=True, exist_ok=True)
        shutil.copy(self.programs / "sonvel", self.program)
        if guardian:
            (self.folder / prefix / guardian).mkdir(parents=True, exist_ok=True)
            shutil.copy(self.programs / "sonvel-guardian", self.folder / prefix / guardian)
        configuration = self.folder / prefix / "share/sonvel/information.json"
        configuration.parent.mkdir(parents=True)
        configuration.write_text(json.dumps({
            "SUFeedURL": self.maker.address + "/appcast.xml", "SUPublicEDKey": self.maker.public_key,
            "AppUpdateAllowInsecureLocalhost": True, "AppUpdateReplacesProgramFile": True} | information))

    def has_checked_today(self):
        """Prevents automatic checks."""
        settings = self.folder / "config/sonvel/sonvel.conf"
        settings.parent.mkdir(parents=True, exist_ok=True)
        settings.write_text(f"[Preferences]\n{NAME}.lastUpdateCheck={int(time.time())}\n")

    def start(self, *prefix, **environment):
        self.desktop.environment |= environment
        self.process = self.desktop.start(*prefix, self.program)
        return self.process

    def original(self):
        return (self.programs / "sonvel").read_bytes()

    def is_running(self):
        return connect(self.desktop.environment).name_has_owner(NAME)

    # What its user sees and does

    def words(self):
        return [words for words, _ in self.desktop.screen.shown() if words]

    def window(self):
        """The update window's heading and the text below it."""
        words = self.words()
        for place, text in enumerate(words):
            if text.startswith(HEADINGS) and text != "Sonvel Update":
                return " | ".join(dict.fromkeys([text] + [more for more in words[place + 1:place + 3] if len(more) > 15]))
        return ""

    def see(self, *texts, within=20):
        """Waits for the update window with one of these texts; returns the current one on a timeout."""
        try:
            return wait_until(lambda: next((seen for seen in [self.window()] if any(t in seen for t in texts)), None), within)
        except AssertionError:
            return self.window() or "no window"

    def check(self, *texts):
        """Requests an update as the user does."""
        for _ in range(5):  # if the panel is just closing, press the icon again
            if "Check for Updates" not in self.words():
                self.desktop.tray.icon().click()
            try:
                self.desktop.screen.control("Check for Updates", 3).press()
                break
            except (AssertionError, dbus.DBusException):
                pass
        return self.see(*texts, "couldn't be updated")

    def take(self):
        """Accepts the offer and every further step."""
        self.desktop.press("Download")
        seen = self.see("is ready to install", "couldn't be updated")
        if "ready" in seen:
            install = next(name for name in self.words() if name in ("Install", "Install and Relaunch"))
            self.desktop.press(install)
        return seen

    def press_return(self):
        """Presses keys, sent to the window with the focus."""
        display = X11.XOpenDisplay
        display.restype = ctypes.c_void_p
        opened = ctypes.c_void_p(display(self.desktop.display.name.encode()))
        code = X11.XKeysymToKeycode(opened, RETURN)
        for is_down in (1, 0):
            XTEST.XTestFakeKeyEvent(opened, code, is_down, 0)
        X11.XSync(opened, 0)
        X11.XCloseDisplay(opened)

    # How it ends

    def ends_when_asked(self, within=10):
        self.process.send_signal(signal.SIGTERM)
        try:
            self.process.wait(within)
            return True
        except subprocess.TimeoutExpired:
            return False

    def pipe(self, name):
        file = self.folder / name
        file.parent.mkdir(parents=True, exist_ok=True)
        os.mkfifo(file)
        return file

    def picture(self, file):
        """A picture of the screen, if it shows anything."""
        if self.desktop.display.is_painted():
            Path(file).parent.mkdir(parents=True, exist_ok=True)
            self.desktop.display.save_picture(file)
