"""The real program in unusual situations, while three players play."""
import resource
import signal
from concurrent.futures import ThreadPoolExecutor
from subprocess import check_output

import pytest

from support.bus import BIN
from support.desktop import Desktop, example_players
from support.waiting import wait_until

STOPPED = "The sound service has stopped. Sonvel goes on by itself when it is back."
DENIED = ("Access is currently denied. Allow “Sonvel” in the rules of the sound server, then it appears "
          "automatically.")
REVOKED = "Audio access was revoked. Audio was restored to its normal output."
OPEN_FILES = 700  # the program's initial limit
NOT_DONE = 3  # exit code when something hangs
LOOK, EVERYTHING = 0o500, 0o710  # PipeWire permissions: read and execute; also write and metadata


def open_files(pid):
    return resource.prlimit(pid, resource.RLIMIT_NOFILE)[0]


class Program:
    """The program, started when the players are heard."""

    def __init__(self, desktop):
        self.desktop, self.screen, self.players = desktop, desktop.screen, example_players()
        for player in self.players:
            desktop.play(player)
        self.hear(1)
        self.process = desktop.start("prlimit", f"--nofile={OPEN_FILES}:", BIN / "sonvel")

    def open(self):
        self.desktop.tray.icon().click()
        self.screen.control("Quit")

    def hear(self, gain, within=20):
        """Waits until all players are heard at this gain."""
        for player in self.players:
            player.gain = gain
            self.desktop.hear(player, within)

    def halve(self):
        for player in self.players:
            self.desktop.set_volume(player, 50)
        self.hear(0.5)

    def let(self, rights):
        """Sets the program's permissions for all objects of the sound server."""
        client, = self.desktop.machine.graph.objects("Client", **{"application.name": "Sonvel"})
        self.desktop.machine.run("pw-cli", "--", "permissions", client["id"], -1, rights)

    def assert_gone(self):
        wait_until(lambda: not self.desktop.machine.graph.of_ours(), what="the end of all that is ours")


@pytest.fixture
def desktop(request):
    """Uses the options of the test's mark."""
    mark = request.node.get_closest_marker("desktop")
    with Desktop(**(mark.kwargs if mark else {})) as desktop:
        yield desktop


@pytest.fixture
def program(desktop):
    return Program(desktop)


def test_ends_on_a_signal_when_every_application_has_its_own_sound(program):
    program.open()
    program.halve()
    assert open_files(program.process.pid) > OPEN_FILES
    guardian = check_output(["pgrep", "-P", str(program.process.pid)])
    assert open_files(int(guardian)) == OPEN_FILES, "a child has its parent's raised limit"
    program.process.send_signal(signal.SIGTERM)
    program.process.send_signal(signal.SIGINT)  # while it is quitting
    assert program.process.wait(20) == 0
    program.hear(1, within=5)
    program.assert_gone()


@pytest.mark.parametrize("hangs", ["display", "dbus-daemon", "pipewire", "wireplumber"])
def test_ends_in_bounded_time_whatever_hangs(program, hangs):
    program.open()
    program.halve()
    other = program.desktop.display.process if hangs == "display" else program.desktop.machine.processes[hangs]
    other.send_signal(signal.SIGSTOP)
    program.process.send_signal(signal.SIGTERM)
    if hangs in ("display", "dbus-daemon"):
        program.hear(1, within=8)
    assert program.process.wait(10) in ([0] if hangs == "wireplumber" else [0, NOT_DONE])
    other.send_signal(signal.SIGCONT)
    program.hear(1, within=5)
    program.assert_gone()


def test_second_start_shows_the_panel_of_the_first(program):
    program.desktop.tray.icon()
    assert program.desktop.start().wait(20) == 0
    program.screen.control(program.players[0].volume)
    assert program.process.poll() is None


@pytest.mark.desktop(has_tray=False)
def test_is_a_window_where_there_is_no_tray(program):
    program.halve()
    program.desktop.press("Quit")
    assert program.process.wait(20) == 0
    program.hear(1, within=5)


def test_says_when_sound_is_lost_and_goes_on_by_itself(program):
    program.open()
    program.halve()
    program.desktop.machine.kill("pipewire")
    program.screen.control(STOPPED)
    program.desktop.machine.restart("pipewire")
    program.screen.wait_until_gone(STOPPED)
    program.screen.control("0 playing · 3 idle")  # the server's end has ended the players
    program.desktop.play(program.players[0])
    program.desktop.hear(program.players[0])  # with its earlier settings


def test_takes_nothing_over_until_it_has_the_rights(desktop):
    desktop.environment |= desktop.machine.restriction()
    program = Program(desktop)
    program.open()
    program.screen.control("Grant Audio Access")
    program.screen.control(DENIED)
    program.hear(1, within=5)
    program.assert_gone()
    program.let(EVERYTHING)
    program.screen.wait_until_gone("Grant Audio Access")
    program.halve()


def test_gives_every_application_its_own_sound_when_its_rights_are_withdrawn(program):
    program.open()
    program.halve()
    status = program.screen.control("3 playing")
    with ThreadPoolExecutor() as pool:  # both states last only until it has reconnected with all permissions
        program.let(LOOK)
        heard = pool.submit(program.hear, 1, within=6)
        wait_until(lambda: status.name == REVOKED, what=REVOKED)
        heard.result()
    program.hear(0.5, within=30)
