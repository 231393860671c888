"""Starting a program that runs already."""
import pytest

from support.bus import BIN, call, connect

PROGRAM = BIN / "single-instance"
NAME, PATH = "com.quellmarsh.sonvel", "/com/quellmarsh/sonvel"


@pytest.fixture
def first(talk):
    def start(mode=""):
        process = talk(PROGRAM, mode)
        assert process.hear() == "first"
        return process

    return start


def test_asks_the_first_to_show_its_panel(talk, first):
    process = first()
    for _ in range(2):
        second = talk(PROGRAM)
        assert (second.hear(), second.exit_code(), process.hear()) == ("told", 0, "show")


def test_quits_on_request(bus, first):
    process = first()
    call(connect(bus.environment), NAME, PATH, NAME, "Quit")
    assert (process.hear(), process.exit_code()) == ("quit", 0)


def test_runs_without_a_bus(talk):
    alone = talk(PROGRAM, environment={"DBUS_SESSION_BUS_ADDRESS": "unix:path=/nonexistent"})
    assert alone.hear() == "no bus"


def test_does_not_hang_with_the_first(talk, first):
    process = first("slow")
    second = talk(PROGRAM)
    assert (second.hear(), second.exit_code()) == ("silent", 0)
    process.tell("go on")
    assert process.hear() == "show", "what was asked while it could not listen is lost"


def test_takes_the_place_of_a_first_that_leaves(talk, first):
    process = first("leaving")
    second = talk(PROGRAM)
    assert process.hear() == "show"
    process.tell("leave")
    assert second.hear() == "first"


def test_takes_the_place_of_a_first_that_crashed(first):
    first().close()
    first()


def test_has_one_winner_when_many_start_at_once(talk):
    starters = [talk(PROGRAM) for _ in range(6)]
    assert sorted(starter.hear() for starter in starters) == ["first"] + ["told"] * 5
