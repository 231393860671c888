"""Takes the pictures of docs/updates.md: what the user of the real program sees of a successful update, of a
change of keys, and of failures.

python3 -m attack.pictures PROGRAMS FOLDER
"""
import subprocess
import sys
from datetime import datetime, timedelta, timezone
from pathlib import Path

from support.waiting import wait_until

from attack.maker import Maker
from attack.on_updates import DIES
from attack.victim import Victim

PICTURES = []


def picture(victim, name, *texts, within=20):
    """The window's picture, once it shows one of these texts and is drawn."""
    seen = victim.see(*texts, within=within)
    assert any(text in seen for text in texts), f"{name}: {seen}"
    if "Check for Updates" in victim.words():  # a restarted program opens its panel
        victim.desktop.tray.icon().click()
    before = None
    for _ in range(20):  # until it no longer changes
        now = victim.desktop.display.points().copy()
        if before is not None and (now == before).all():
            break
        before = now
        try:
            wait_until(lambda: False, 0.3)
        except AssertionError:
            pass
    file = Path(sys.argv[2]) / f"{len(PICTURES) + 1}-{name}.png"
    victim.picture(file)
    PICTURES.append(file)
    print(f"{file.name}: {seen}", flush=True)


def start(victim, feed, **information):
    victim.install(**information)
    victim.maker.publish(feed)
    victim.has_checked_today()
    victim.start()


def update_with_another_key(victim):
    """The feed is signed only with the new key; this copy has both."""
    new = Maker()
    feed = new.feed(new.item("2.0", victim.original() + b"2.0"))
    start(victim, feed, AppUpdateAdditionalPublicEDKey=new.public_key)
    victim.check()
    picture(victim, "offered-by-the-new-key", "2.0 is available")
    victim.desktop.press("Download")
    picture(victim, "ready", "is ready to install")
    victim.desktop.press("Install and Relaunch")
    victim.process.wait(100)
    assert victim.program.read_bytes() == victim.original() + b"2.0"


def only_the_old_key(victim):
    new = Maker()
    start(victim, new.feed(new.item("2.0", victim.original())))
    victim.check()
    picture(victim, "copy-without-the-new-key", "isn't signed")


def up_to_date(victim):
    start(victim, victim.maker.feed())
    victim.check("up to date")
    picture(victim, "up-to-date", "newest there is")


def undone(victim, program, said, name):
    start(victim, victim.maker.feed(victim.maker.item("2.0", program)))
    victim.check("2.0 is available")
    victim.take()
    picture(victim, name, said, within=90)


def older(victim, feed, name):
    item = victim.maker.item("2.0", victim.original())
    start(victim, victim.maker.feed(item, counter=2))
    victim.check("2.0 is available")
    victim.desktop.press("Not Now")
    victim.maker.publish(feed(victim.maker))
    victim.check()
    picture(victim, name, "something older")


def expired(victim):
    past = (datetime.now(timezone.utc) - timedelta(days=1)).strftime("%Y-%m-%dT%H:%M:%SZ")
    start(victim, victim.maker.feed(expires=past))
    victim.check()
    picture(victim, "expired", "has expired")


def main():
    programs, folder = sys.argv[1:]
    hangs = Path("/usr/bin/dbus-monitor").read_bytes()  # a working program that is not Sonvel
    for show in (update_with_another_key, only_the_old_key, up_to_date,
                 lambda victim: undone(victim, DIES, "ended within a minute", "undone-because-it-died"),
                 lambda victim: undone(victim, hangs, "become ready in time", "undone-because-it-hung"),
                 lambda victim: older(victim, lambda maker: maker.feed(counter=1), "replay"),
                 lambda victim: older(victim, lambda maker: maker.feed(maker.item("1.9", victim.original()), counter=3),
                                      "downgrade"),
                 expired):
        with Victim(programs) as victim:
            show(victim)
    tile(PICTURES, f"{folder}/updates.png")


def tile(pictures, file, columns=2, width=476, height=146):
    """One picture of all, with space around each."""
    numbers = range(len(pictures))
    padded = ";".join(f"[{i}]pad={width}:{height}:8:8:#777777[{i}p]" for i in numbers)
    places = "|".join(f"{i % columns * width}_{i // columns * height}" for i in numbers)
    stack = "".join(f"[{i}p]" for i in numbers) + f"xstack={len(pictures)}:layout={places}:fill=#777777"
    subprocess.run(["ffmpeg", "-loglevel", "error", "-y", *(word for picture in pictures for word in ("-i", picture)),
                    "-filter_complex", f"{padded};{stack}", file], check=True)


main()
