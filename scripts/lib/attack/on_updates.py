"""Attacks by someone who can change what the update server sends, or replace files during an update. Each
returns whether it succeeded, and what was seen."""
import shutil
import signal
import socket
import threading
from datetime import datetime, timedelta, timezone
from pathlib import Path

from support.waiting import wait_until

ATTACKS = {}
DIES = Path("/bin/false").read_bytes()
TELLS_ITS_ENVIRONMENT = Path("/usr/bin/env").read_bytes()
PACKAGE = b"!<arch>\ndebian-binary   1784000000  0     0     100644  4         `\n2.0\n"
OPENER = "[Desktop Entry]\nType=Application\nName=Opener\nExec={program} %f\nMimeType={type};\n"
DEB = "application/vnd.debian.binary-package"


def attack(name):
    def add(function):
        ATTACKS[name] = function
    return add


def has(victim, content):
    """Waits until the program's file has this content; False if it does not happen."""
    try:
        return wait_until(lambda: victim.program.read_bytes() == content, 10)
    except AssertionError:
        return False


@attack("a feed that says 99.0 around an older program of the maker's")
def says_a_higher_version(victim):
    older = victim.original() + b"older"
    victim.install()
    victim.maker.publish(victim.maker.feed(victim.maker.item("0.0.1", older)).replace(b">0.0.1<", b">99.0<"))
    victim.has_checked_today()
    victim.start()
    seen = victim.check("99.0 is available")
    if "available" not in seen:
        return has(victim, older), seen
    seen = victim.take()
    return has(victim, older), seen


@attack("an older feed sent again")
def replays(victim):
    victim.install()
    victim.maker.publish(victim.maker.feed(victim.maker.item("2.0", victim.original()), counter=2))
    victim.has_checked_today()
    victim.start()
    victim.check("2.0 is available")
    victim.desktop.press("Not Now")
    victim.maker.publish(victim.maker.feed(counter=1))
    seen = victim.check("up to date")
    return "newest there is" in seen, seen


@attack("a feed that has expired")
def is_expired(victim):
    victim.install()
    past = (datetime.now(timezone.utc) - timedelta(days=1)).strftime("%Y-%m-%dT%H:%M:%SZ")
    victim.maker.publish(victim.maker.feed(counter=1, expires=past))
    victim.has_checked_today()
    victim.start()
    seen = victim.check("up to date")
    return "newest there is" in seen, seen


@attack("a new version that dies at its start")
def dies(victim):
    victim.install()
    victim.maker.publish(victim.maker.feed(victim.maker.item("2.0", DIES)))
    victim.has_checked_today()
    victim.start()
    victim.check("2.0 is available")
    victim.take()
    victim.process.wait(40)
    seen = victim.see("previous one is back", within=15)
    return not (has(victim, victim.original()) and victim.is_running()), seen


@attack("libraries of a mount that is gone, left to the new version of an AppImage")
def leaves_the_mount(victim):
    victim.install("mount/usr")
    mount, image = victim.folder / "mount", victim.folder / "Sonvel.AppImage"
    shutil.copy(victim.program, image)
    victim.maker.publish(victim.maker.feed(victim.maker.item("2.0", TELLS_ITS_ENVIRONMENT)))
    victim.has_checked_today()
    process = victim.start(APPDIR=str(mount), APPIMAGE=str(image), LD_LIBRARY_PATH=f"{mount}/usr/lib:",
                           QT_QPA_FONTDIR="/usr/share/fonts/truetype/dejavu")
    victim.check("2.0 is available")
    victim.take()
    process.wait(40)
    log = next(name for name, one in victim.desktop.machine.processes.items() if one is process)
    said = wait_until(lambda: [line for line in (victim.folder / f"{log}.log").read_text().splitlines()
                               if line.startswith(("LD_LIBRARY_PATH=", "HOME="))], what="its environment")
    left = [line.replace(str(mount), "MOUNT") for line in said if str(mount) in line]
    return bool(left), left[0] if left else "no LD_LIBRARY_PATH"


@attack("an update of one file for an installation of two")
def replaces_one_of_two(victim):
    new = victim.original() + b"new"
    beside = "bin" if b"libexec" not in victim.original() else "libexec/sonvel"
    victim.install(guardian=beside)
    victim.maker.publish(victim.maker.feed(victim.maker.item("2.0", new)))
    victim.has_checked_today()
    victim.start()
    victim.check("2.0 is available")
    victim.take()
    came_off = has(victim, new)
    return came_off, "one of the two files is replaced" if came_off else victim.window()


@attack("two presses of Return that were meant for something else")
def is_accepted_by_chance(victim):
    new = victim.original() + b"new"
    victim.install()
    victim.maker.publish(victim.maker.feed(victim.maker.item("2.0", new)))
    victim.start()
    victim.see("2.0 is available", within=30)
    victim.press_return()
    victim.see("is ready to install", within=5)
    victim.press_return()
    came_off = has(victim, new)
    return came_off, "it is installed" if came_off else victim.window()


@attack("a version in the feed of two lines, turned round and endless")
def is_long(victim):
    shown = "2.0\n\u202eSafe " + "x" * 300
    victim.install()
    victim.maker.publish(victim.maker.feed(victim.maker.item("2.0", victim.original(), shown)))
    victim.has_checked_today()
    victim.start()
    seen = victim.check("is available").split(" | ")[0]
    return "available" in seen and (len(seen) > 100 or "\n" in seen or "\u202e" in seen), f"{seen} ({len(seen)} characters)"


@attack("a faulty newest item before a good one")
def hides_the_good_one(victim):
    victim.install()
    maker = victim.maker
    maker.publish(maker.feed(maker.item("3.0", b"", is_faulty=True), maker.item("2.0", victim.original())))
    victim.has_checked_today()
    victim.start()
    seen = victim.check("is available")
    return "2.0 is available" not in seen, seen


def running(program):
    """The processes that run this program and already handle signals."""
    found = []
    for process in Path("/proc").glob("[0-9]*"):
        try:
            caught = int((process / "status").read_text().split("SigCgt:")[1].split()[0], 16)
            if (process / "exe").readlink() == program and caught >> signal.SIGTERM - 1 & 1:
                found.append(process)
        except OSError:  # it has ended
            pass
    return found


def write_to_what_it_holds(victim, other):
    """Overwrites every file of the update that another program can reach."""
    written = []
    files = [*(victim.folder / "cache").rglob("*"), *Path("/tmp").glob("*sonvel*/**/*"),
             *Path(f"/proc/{victim.process.pid}/fd").iterdir()]
    for file in files:
        try:
            if file.is_file() and file.read_bytes() == PACKAGE:
                file.write_bytes(other)
                written.append(file)
        except OSError:
            pass
    return written


@attack("another package in the place of the one that was verified")
def swaps_the_package(victim):
    other = PACKAGE.replace(b"2.0", b"bad")
    victim.install()
    data, told = victim.folder / "data/applications", victim.folder / "told"
    data.mkdir(parents=True, exist_ok=True)
    opener = victim.folder / "bin/opener"
    opener.write_text(f'#!/bin/sh\ntouch {told}.asks\nwhile [ ! -e {told}.go ]; do sleep 0.1; done\n'
                      f'cat "$1" >{told}.new; mv {told}.new {told}\n')
    opener.chmod(0o755)
    (data / "opener.desktop").write_text(OPENER.format(program=opener, type=DEB))
    (victim.folder / "config/mimeapps.list").write_text(f"[Default Applications]\n{DEB}=opener.desktop\n")
    victim.maker.publish(victim.maker.feed(victim.maker.item("2.0", PACKAGE, suffix=".deb")))
    victim.has_checked_today()
    # Installed by a system package.
    place = Path("/usr/lib/sonvel-attacked")
    place.mkdir(exist_ok=True)
    bound = f"mount --bind {victim.folder}/prefix {place} && exec {place}/bin/sonvel --background"
    victim.process = victim.desktop.machine.start("unshare", "-m", "sh", "-c", bound, environment=victim.desktop.environment)
    try:
        victim.check("2.0 is available")
        victim.desktop.press("Download")
        seen = victim.see("is ready to install", "couldn't be updated")
        victim.desktop.press("Install")
        wait_until(lambda: told.with_name("told.asks").exists(), what="the installer, which asks its user first")
        write_to_what_it_holds(victim, other)
        told.with_name("told.go").touch()
        wait_until(told.exists, what="the package in the installer")
        return told.read_bytes() == other, f"installed: {told.read_bytes()[-4:].decode().strip()}; {seen}"
    finally:
        place.rmdir()


@attack("a second session's start while the first one has an update ready")
def starts_beside(victim):
    new = victim.original() + b"new"
    victim.install()
    victim.maker.publish(victim.maker.feed(victim.maker.item("2.0", new)))
    victim.has_checked_today()
    victim.start()
    victim.check("2.0 is available")
    victim.desktop.press("Download")
    victim.see("is ready to install")
    beside = victim.desktop.environment | {"QT_QPA_PLATFORM": "offscreen"}
    victim.desktop.machine.start("dbus-run-machine", "--", victim.program, environment=beside)
    wait_until(lambda: len(running(victim.program)) == 2, what="the second one")
    try:  # removes what an earlier run has left
        wait_until(lambda: not running(victim.program), 5)
    except AssertionError:
        pass
    victim.desktop.press("Install and Relaunch")
    came_off = not has(victim, new)
    return came_off, victim.window() if came_off else "the first one's update is installed"


@attack("a server that speaks HTTP/2")
def offers_http2(victim):
    listening = socket.create_server(("127.0.0.1", 0))
    heard = []

    def listen():
        connection, _ = listening.accept()
        heard.append(connection.recv(4096))
        connection.close()

    threading.Thread(target=listen, daemon=True).start()
    victim.install(SUFeedURL=f"https://localhost:{listening.getsockname()[1]}/appcast.xml")
    victim.has_checked_today()
    victim.start()
    victim.check()
    return b"\x02h2" in heard[0], "it asks for h2" if b"\x02h2" in heard[0] else "it asks for http/1.1 alone"
