"""Attacks by programs that play sound, and by their or the user's files. Each returns whether it succeeded,
and what was seen."""
import os
import resource
import shutil
import signal
import subprocess
from pathlib import Path

from support.hearing import write_tone
from support.waiting import wait_until

ATTACKS = {}
ENTRY = "[Desktop Entry]\nType=Application\nName={name}\nExec={program} %U\nIcon={icon}\n"
OPEN_FILES = 700
MARKS = "Zalgo" + "o\u0301" + "\u0301" * 60


def attack(name):
    def add(function):
        ATTACKS[name] = function
    return add


def rows(victim):
    """The applications that the panel lists."""
    return [words.removesuffix(" volume") for words in victim.words()
            if words.endswith(" volume") and words != "Master volume"]


def open_panel(victim):
    victim.install(SUFeedURL="")
    victim.start()
    victim.desktop.tray.icon().click()
    victim.desktop.screen.control("Quit")


def listed(victim, within=6):
    try:
        wait_until(lambda: rows(victim), within)
    except AssertionError:
        pass
    return rows(victim)


def hides(program, **client):
    def carry_out(victim):
        victim.desktop.machine.player(program=program, client={key.replace("__", "."): value
                                                               for key, value in client.items()})
        open_panel(victim)
        found = listed(victim)
        return not found, f"rows: {found}"
    return carry_out


attack("a program that calls itself wireplumber")(hides(
    "wireplumber", application__process__binary="wireplumber", application__name="WirePlumber"))
attack("a program that calls itself pipewire-pulse")(hides(
    "player", application__process__binary="pipewire-pulse", application__name="pipewire-pulse"))
attack("a program that claims this program's ID")(hides(
    "player", application__id="com.quellmarsh.sonvel", application__name="Sonvel",
    pipewire__access__portal__app_id="com.quellmarsh.sonvel"))


@attack("a program that claims a sandbox's ID")
def claims_a_sandbox(victim):
    data = victim.folder / "data/applications"
    data.mkdir(parents=True, exist_ok=True)
    (data / "org.example.Bank.desktop").write_text(ENTRY.format(name="Bank", program="/bin/sh", icon=""))
    victim.desktop.machine.player(program="rogue", client={
        "application.name": "Rogue", "application.id": "org.example.Rogue",
        "pipewire.access.portal.app_id": "org.example.Bank"})
    open_panel(victim)
    found = listed(victim)
    return "Bank" in found, f"rows: {found}"


@attack("two programs that claim the process ID 2, as inside of a sandbox")
def claims_another_process(victim):
    machine = victim.desktop.machine
    for name in ("alpha", "beta"):
        file = machine.folder / f"{name}.wav"
        write_tone(file, 1000, 0.1)
        machine.start("paplay", f"--client-name={name.title()}", file, executable=machine.copy_program("paplay", name), environment={
            "PULSE_PROP": f"application.process.id=2 application.process.binary={name}"})
    open_panel(victim)
    try:
        wait_until(lambda: len(rows(victim)) == 2, 8)
    except AssertionError:
        pass
    found = rows(victim)
    return sorted(found) != ["Alpha", "Beta"], f"rows: {found}"


def names(name, is_bad):
    def carry_out(victim):
        victim.desktop.machine.player(program="named", client={"application.name": name})
        open_panel(victim)
        found = listed(victim)
        return not found or is_bad(found[0]), f"rows: {found}"
    return carry_out


attack("a name of nothing but marks and spaces")(names("\u200b\u202e \u3164", lambda name: not name.strip("\u200b\u202e \u3164")))
attack("a name of two lines")(names("Player\nPaid", lambda name: "\n" in name))
attack("a name that reads backwards")(names("Play\u202eer", lambda name: "\u202e" in name))
attack("a name with marks piled up")(names(MARKS, lambda name: "\u0301" * 5 in name))
attack("a name of 4,096 characters")(names("n" * 4096, lambda name: len(name) > 256))


@attack("a device whose name fills the menu")
def device_fills_the_menu(victim):
    victim.desktop.machine.run("pw-cli", "create-node", "adapter", str({
        "factory.name": "support.null-audio-sink", "node.name": "wide", "node.description": "W" * 900 + "\u202eback",
        "media.class": "Audio/Sink", "audio.position": "FL,FR", "priority.session": "2000",
        "object.linger": "true"}).replace("'", '"'))
    victim.desktop.machine.player()
    open_panel(victim)
    menu = wait_until(lambda: next((words for words in victim.words() if words.startswith("Output for")), None))
    victim.desktop.press(menu)
    wait_until(lambda: any("WWWW" in words for words in victim.words()), 10, "the device in the menu")
    longest = max((words for words in victim.words() if "WWWW" in words), key=len)
    return len(longest) > 300 or "\u202e" in longest, f"{len(longest)} characters are shown"


def icon_of_a_player(make_icon):
    def carry_out(victim):
        machine = victim.desktop.machine
        icon = make_icon(victim)
        data = victim.folder / "data/applications"
        data.mkdir(parents=True, exist_ok=True)
        program = machine.copy_program("tone-player", "records")
        (data / "org.example.Records.desktop").write_text(ENTRY.format(name="Records", program=program, icon=icon))
        machine.player(program="records")
        victim.install(SUFeedURL="")
        victim.start()
        return held(victim)
    return carry_out


def held(victim):
    """Whether the panel fails to open, or the program fails to quit when asked."""
    resource.prlimit(victim.process.pid, resource.RLIMIT_AS, (4 << 30, 4 << 30))
    try:
        victim.desktop.tray.icon().click()
        victim.desktop.screen.control("Quit", 10)
        opened = True
    except Exception:  # it no longer answers
        opened = False
    is_alive = victim.process.poll() is None
    ended = victim.ends_when_asked()
    seen = f"the panel {'opens' if opened else 'does not open'}; {'ends when asked' if ended else 'SIGTERM does not end it'}"
    if not is_alive:
        seen = f"it has died ({victim.process.returncode})"
    return not (opened and is_alive and ended), seen


def huge_file(victim):
    file = victim.folder / "huge.png"
    with open(file, "wb") as opened:
        opened.truncate(3 << 30)
    return file


def huge_picture(victim):
    """A small file that gives an endless picture."""
    file = victim.folder / "huge.svg"
    file.write_text('<svg xmlns="http://www.w3.org/2000/svg" width="1000000" height="1000000" viewBox="0 0 9 9">'
                    '<rect width="9" height="9"/></svg>')
    return file


attack("a pipe as an application's icon")(icon_of_a_player(lambda victim: victim.pipe("icon.png")))
attack("a device without an end as an application's icon")(icon_of_a_player(lambda _: "/dev/zero"))
attack("a file of 3 GiB as an application's icon")(icon_of_a_player(huge_file))
attack("a picture of a million points' width as an icon")(icon_of_a_player(huge_picture))


def in_the_place_of(name, make=None):
    """Replaces a file that the program reads by a pipe or another special file."""
    def carry_out(victim):
        victim.install(SUFeedURL="")
        file = victim.folder / name
        file.parent.mkdir(parents=True, exist_ok=True)
        file.unlink(missing_ok=True)
        os.mkfifo(file) if make is None else make(file)
        victim.desktop.machine.player()
        victim.start()
        return held(victim)
    return carry_out


for what, place in (("a desktop entry", "data/applications/org.example.Entry.desktop"),
                    ("the settings", "config/sonvel/sonvel.conf"),
                    ("the configuration", "prefix/share/sonvel/information.json")):
    attack(f"a pipe as {what}")(in_the_place_of(place))
    attack(f"a device without an end as {what}")(in_the_place_of(place, lambda file: file.symlink_to("/dev/zero")))


@attack("SIGTERM while the display hangs")
def display_hangs(victim):
    player = victim.desktop.machine.player()
    open_panel(victim)
    listed(victim)
    display = victim.desktop.display.process
    display.send_signal(signal.SIGSTOP)
    try:
        ended = victim.ends_when_asked()
    finally:
        display.send_signal(signal.SIGCONT)
    return not ended, "it ends" if ended else "it does not end in ten seconds"


@attack("the raised limit of open files left to children")
def leaves_the_limit(victim):
    victim.program.parent.mkdir(parents=True)
    for program in ("sonvel", "sonvel-guardian"):
        shutil.copy(victim.programs / program, victim.program.parent)
    victim.desktop.machine.player()
    victim.start("prlimit", f"--nofile={OPEN_FILES}:")
    victim.desktop.tray.icon().click()
    child = wait_until(lambda: subprocess.run(["pgrep", "-P", str(victim.process.pid)], capture_output=True, text=True).stdout,
                       what="its guardian")
    limit = resource.prlimit(int(child.split()[0]), resource.RLIMIT_NOFILE)[0]
    return limit != OPEN_FILES, f"{limit} for a child of a program that was started with {OPEN_FILES}"


@attack("faults of memory without what ends the program then")
def lacks_hardening(victim):
    check = Path(__file__).parents[2] / "check-hardening"
    programs = [victim.programs / name for name in ("sonvel", "sonvel-guardian")]
    said = subprocess.run([check, *programs], capture_output=True, text=True).stderr.splitlines()
    return bool(said), f"{len(said)} faults: " + "; ".join(line.split(" is without ")[-1] for line in said[:3]) if said else "all on"
