"""Everything by which the program is asked to end."""
import pathlib
import signal

import pytest

from support.bus import BIN, Service
from support.waiting import wait_until

PROGRAM = BIN / "quit-requests"
MANAGER, PATH = "org.gnome.SessionManager", "/org/gnome/SessionManager"
CLIENT, CLIENT_PATH = "org.gnome.SessionManager.ClientPrivate", PATH + "/Client1"


@pytest.fixture
def start(talk):
    def start(*command):
        process = talk(*command, environment={"DESKTOP_AUTOSTART_ID": "autostart-7"})
        assert process.hear() == "ready"
        return process

    return start


@pytest.fixture
def manager(bus):
    service = Service(bus.environment, MANAGER, PATH, [(MANAGER, "RegisterClient", "ss", "o", f"ret = '{CLIENT_PATH}'")])
    service.add(CLIENT_PATH, CLIENT, [("EndSessionResponse", "bs", "", "")])
    yield service
    service.close()


def signals(process, field):
    """What the kernel says of a process's signals: a bit each, SIGHUP's first."""
    status = pathlib.Path(f"/proc/{process.process.pid}/status").read_text().splitlines()
    return int(next(line for line in status if line.startswith(field)).split()[1], 16)


def test_tells_each_signal_outlives_it_and_takes_none_to_the_end(start):
    process = start(PROGRAM, "late")
    for number in (signal.SIGTERM, signal.SIGINT, signal.SIGHUP, signal.SIGTERM):
        process.process.send_signal(number)
        assert process.hear() == "quit", number
    process.tell("finish")
    assert process.hear() == "done"
    process.process.send_signal(signal.SIGTERM)
    process.tell("end")
    assert process.exit_code() == 3


def test_leaves_an_ignored_hang_up_ignored(start):
    assert signals(start("nohup", PROGRAM), "SigIgn") & 1


def test_blocks_no_signals_of_children(talk):
    assert talk(PROGRAM, "child").hear() == "SigBlk:\t0000000000000000"


def test_turns_the_applications_own_quit_into_a_request(start):
    process = start(PROGRAM, "self")
    assert process.hear() == "quit"
    process.process.send_signal(signal.SIGTERM)
    assert process.hear() == "quit", "it has ended"


def test_lets_the_session_manager_wait_until_all_is_done(manager, start):
    process = start(PROGRAM)
    assert wait_until(lambda: manager.calls("RegisterClient")) == [["com.quellmarsh.sonvel", "autostart-7"]]

    def answers():
        return manager.calls("EndSessionResponse", CLIENT_PATH)

    def agrees():
        manager.signal(CLIENT, "QueryEndSession", "u", 0, path=CLIENT_PATH)
        try:
            return wait_until(answers, 0.5)
        except AssertionError:  # it does not listen yet
            return False

    wait_until(agrees)  # at once, and quits nothing: another client may object
    before = len(answers())
    manager.signal(CLIENT, "EndSession", "u", 0, path=CLIENT_PATH)
    assert process.hear() == "quit"
    process.process.send_signal(signal.SIGTERM)
    assert process.hear() == "quit"
    assert len(answers()) == before, "it has answered before all is done"
    process.tell("finish")
    assert process.exit_code() == 3
    assert len(answers()) == before + 1 and answers()[-1][0]


def test_quits_when_the_session_manager_stops_it(manager, start):
    process = start(PROGRAM)

    def stop():
        manager.signal(CLIENT, "Stop", path=CLIENT_PATH)
        return process.hear(0.05)

    assert wait_until(stop) == "quit"
