"""The real program, controlled by commands as scripts do, judged by the sound at the sinks."""
import json
import subprocess
import sys

from support.bus import BIN
from support.desktop import Application, Desktop
from support.lines import LineProcess
from support.waiting import wait_until

NOT_RUNNING, NOT_FOUND, AMBIGUOUS, NOT_PERMITTED, WRONG_USAGE = 3, 4, 5, 6, 64

# Calls each part of the D-Bus service, from a root folder with or without a sandbox's mark.
CALLER = """
import dbus, os, sys, tempfile
bus, folder = dbus.SessionBus(), tempfile.mkdtemp()
if sys.argv[2] == "in-sandbox":
    open(folder + "/.flatpak-info", "w").close()
    os.chroot(folder)
for path, interface, method, *arguments in (
        ("/Mixer", "org.freedesktop.DBus.Properties", "GetAll", sys.argv[1] + ".Mixer1"),
        ("/Mixer", "org.freedesktop.DBus.Introspectable", "Introspect"),
        ("/Mixer", sys.argv[1] + ".Mixer1", "ChangeMasterVolume", 1), ("", sys.argv[1], "ShowPanel"),
        ("", sys.argv[1], "Quit")):
    try:
        bus.call_blocking(sys.argv[1], "/com/quellmarsh/sonvel" + path, interface, method, None, arguments)
        print("done")
    except dbus.DBusException as error:
        print(error.get_dbus_name().rsplit(".", 1)[1])
"""


class Commands:
    def __init__(self, environment, *options):
        self.environment, self.words = environment, [BIN / "sonvel", *options]

    def __call__(self, *words, code=0):
        """The output of a command; fails if its exit code differs."""
        done = subprocess.run([*self.words, *words], env=self.environment, capture_output=True, text=True, timeout=20)
        assert done.returncode == code, (words, done)
        assert bool(done.stderr) == bool(code), done
        return done.stdout

    def state(self):
        return json.loads(self("list", "--json"))

    def wait_until_running(self):
        wait_until(lambda: subprocess.run([*self.words, "list"], env=self.environment, capture_output=True).returncode
                   != NOT_RUNNING, what="the program")


def applications(state):
    return {application["name"]: application for application in state["applications"]}


def test_each_command_is_heard_with_the_panel_closed_and_its_changes_are_watched():
    records = Application("Records", "pw-play", 1000, 0.2, "#3465a4")
    recital = Application("Recital", "paplay", 1700, 0.15, "#c4572a")
    with Desktop() as desktop:
        for application in (records, recital):
            desktop.play(application)
            desktop.hear(application)
        desktop.start()
        icon, sonvel = desktop.tray.icon(), Commands(desktop.environment)
        assert [one["key"] for one in sonvel.state()["applications"]] == ["org.example.Recital", "org.example.Records"]
        assert desktop.display.is_black(), "the panel is open"

        def obey(application, *words, **expected):
            sonvel(*words)
            vars(application).update(expected)
            desktop.hear(application)

        obey(records, "volume", "records", "50", gain=0.5)
        obey(records, "volume", "org.example.Records", "+20", gain=0.7)
        obey(records, "volume", "Reco", "-40%", gain=0.3)
        obey(recital, "mute", "Recital", is_muted=True)
        obey(recital, "mute", "Recital", "toggle", is_muted=False)
        obey(records, "route", "Records", "headphones", sink="Headphones")
        obey(records, "route", "Records", "follow", sink="Speakers")
        obey(records, "route", "Records", "headphones", sink="Headphones")
        assert applications(sonvel.state())["Records"]["output"] == "Headphones"
        fixed = desktop.machine.player(2600, 0.1, "fixed", **{"node.dont-reconnect": "true"})
        wait_until(lambda: "only part of it under control" in sonvel("list"), what="a row that says so")
        assert [one["key"] for one in sonvel.state()["applications"] if "partial" in one] == ["fixed"]
        fixed.finish()
        sonvel("volume", "Rec", "10", code=AMBIGUOUS)
        sonvel("route", "Records", "Nowhere", code=NOT_FOUND)
        obey(records, "everything", sink="Speakers")
        sonvel("master", "40")
        wait_until(lambda: desktop.machine.run("wpctl", "get-volume", "@DEFAULT_SINK@") == "Volume: 0.40\n",
                   what="the master volume")

        watch = LineProcess(desktop.machine, BIN / "sonvel", "watch", "--json", environment=desktop.environment)

        def wait_for(condition):
            state = None
            while state is None or not condition(state):
                state = json.loads(watch.hear() or "null")
                assert state, "the change was not told"
            assert not any("level" in one for one in state["applications"])

        wait_for(lambda state: state["master"]["volume"] == 40)
        desktop.machine.run("wpctl", "set-volume", "@DEFAULT_SINK@", "0.6")
        wait_for(lambda state: state["master"]["volume"] == 60)
        icon.click()
        desktop.set_volume(records, 150)
        wait_for(lambda state: applications(state)["Records"]["volume"] == 150)
        icon.click()
        wait_until(desktop.display.is_black, what="a closed panel")
        recital.process.kill()
        wait_for(lambda state: not applications(state)["Recital"]["playing"])
        obey(records, "reset", gain=1)
        wait_for(lambda state: applications(state)["Records"]["volume"] == 100)

        def call(where):
            return desktop.machine.run(sys.executable, "-c", CALLER, "com.quellmarsh.sonvel", where).split()

        assert call("in-sandbox") == ["AccessDenied"] * 5
        assert call("outside") == ["done"] * 5
        wait_for(lambda state: state["master"]["volume"] == 61)
        assert watch.process.wait(20) == NOT_RUNNING, "it goes on watching a program that has ended"


def test_says_what_is_wrong_and_changes_nothing(bus):
    environment = bus.environment | {"QT_QPA_PLATFORM": "offscreen"}
    real, simulated = Commands(environment), Commands(environment, "--simulated")
    real("list", code=NOT_RUNNING)
    for program in (real, simulated):
        bus.start(*program.words, environment=environment)
        program.wait_until_running()
    real("master", "40", code=NOT_PERMITTED)  # there is no sound server
    before = simulated("list")
    for words, code in ((["volume", "Nobody", "40"], NOT_FOUND), (["mute", ""], NOT_FOUND),
                        (["volume", "Music", "201"], WRONG_USAGE), (["volume", "Music", "loud"], WRONG_USAGE),
                        (["mute", "Music", "maybe"], WRONG_USAGE), (["master", "-1", "2"], WRONG_USAGE),
                        (["list", "--levels"], WRONG_USAGE), (["sing"], WRONG_USAGE)):
        simulated(*words, code=code)
    assert simulated("list") == before
    watch = LineProcess(bus, *simulated.words, "watch", "--json", "--levels", environment=environment)
    wait_until(lambda: 0 < applications(json.loads(watch.hear()))["Music"].get("level", 0) < 1, what="a level")
