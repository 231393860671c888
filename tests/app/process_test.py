"""The real program without display and sound server: a second start, and everything that ends it."""
import os
import pathlib
import signal

import pytest

from support.bus import BIN, Service, call, connect
from support.waiting import wait_until

NAME, PATH = "com.quellmarsh.sonvel", "/com/quellmarsh/sonvel"
MANAGER, MANAGER_PATH = "org.gnome.SessionManager", "/org/gnome/SessionManager"
CLIENT, CLIENT_PATH = "org.gnome.SessionManager.ClientPrivate", MANAGER_PATH + "/Client1"


def signals(process, field):
    """A signal mask of the process, from /proc; bit 0 is SIGHUP."""
    status = pathlib.Path(f"/proc/{process.pid}/status").read_text()
    return int(status.split(field + ":")[1].split()[0], 16)


@pytest.fixture
def start(bus):
    return lambda *prefix, **environment: bus.start(
        *prefix, BIN / "sonvel", environment={"QT_QPA_PLATFORM": "offscreen"} | environment)


@pytest.fixture
def start_ready(start):
    def start_ready(*prefix, **environment):
        process = start(*prefix, **environment)
        wait_until(lambda: signals(process, "SigCgt") >> signal.SIGTERM - 1 & 1, what="a handler of SIGTERM")
        return process

    return start_ready


def test_has_one_winner_when_many_start_at_once(bus, start):
    starters = [start() for _ in range(4)]
    wait_until(lambda: sum(starter.poll() is None for starter in starters) == 1, what="the end of all but one")
    owner = call(connect(bus.environment), "org.freedesktop.DBus", "/", "org.freedesktop.DBus",
                 "GetConnectionUnixProcessID", NAME)
    assert [owner] == [starter.pid for starter in starters if starter.poll() is None]


def test_starts_beside_one_that_hangs_only_when_that_has_crashed(bus, start, start_ready):
    first = start_ready()
    first.send_signal(signal.SIGSTOP)
    assert start().wait(20) == 2, "it does not say that the first hangs"
    first.kill()
    Service(bus.environment, NAME, PATH,
            [("org.freedesktop.Application", "Activate", "a{sv}", "", "import os; os._exit(1)")])
    start_ready()  # takes the place of the one that crashes when it is asked


def test_passes_the_launchers_leave_to_come_to_the_front_on_to_the_first(bus, start):
    first = Service(bus.environment, NAME, PATH, [("org.freedesktop.Application", "Activate", "a{sv}", "", "")])
    assert start(XDG_ACTIVATION_TOKEN="leave-7", DESKTOP_STARTUP_ID="leave-8").wait(20) == 0
    assert first.calls("Activate") == [[{"activation-token": "leave-7", "desktop-startup-id": "leave-8"}]]
    first.close()


def test_ends_when_it_is_asked_and_waits_for_no_pipe_in_the_place_of_a_file(bus, start_ready):
    for pipe in ("config/sonvel/sonvel.conf", "data/applications/pipe.desktop", "data/icons/hicolor/index.theme"):
        (bus.folder / pipe).parent.mkdir(parents=True)
        os.mkfifo(bus.folder / pipe)
    for ask in (lambda _: call(connect(bus.environment), NAME, PATH, NAME, "Quit"),
                *(lambda process, number=number: process.send_signal(number)
                  for number in (signal.SIGTERM, signal.SIGINT, signal.SIGHUP))):
        process = start_ready()
        ask(process)
        assert process.wait(20) == 0
    alone = start_ready("nohup", DBUS_SESSION_BUS_ADDRESS="unix:path=/nonexistent")
    assert signals(alone, "SigIgn") & 1, "it ends at a hangup"
    alone.send_signal(signal.SIGTERM)
    assert alone.wait(20) == 0


def test_lets_the_session_manager_wait_until_all_is_done(bus, start):
    manager = Service(bus.environment, MANAGER, MANAGER_PATH,
                      [(MANAGER, "RegisterClient", "ss", "o", f"ret = '{CLIENT_PATH}'")])
    manager.add(CLIENT_PATH, CLIENT, [("EndSessionResponse", "bs", "", "")])

    def answers():
        return manager.calls("EndSessionResponse", CLIENT_PATH)

    def say_until(name, condition, *arguments):
        """Repeatedly, because at first nobody may be listening."""
        def say():
            manager.signal(CLIENT, name, *arguments, path=CLIENT_PATH)
            try:
                return wait_until(condition, 0.5)
            except AssertionError:
                return False
        wait_until(say, what=name)

    process = start(DESKTOP_AUTOSTART_ID="autostart-7")
    say_until("QueryEndSession", answers, "u", 0)
    assert manager.calls("RegisterClient") == [[NAME, "autostart-7"]]
    assert process.poll() is None, "another client may object"
    before = len(answers())
    manager.signal(CLIENT, "EndSession", "u", 0, path=CLIENT_PATH)
    assert process.wait(20) == 0
    assert len(answers()) == before + 1 and answers()[-1][0]

    process = start()
    say_until("Stop", lambda: process.poll() is not None)
    assert process.wait() == 0
    manager.close()
