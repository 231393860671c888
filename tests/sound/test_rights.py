"""The sound server's permissions for the program count as its user's consent."""

import time
from pathlib import Path

import pytest
from support.waiting import wait_until

GRANTED, DENIED, UNDETERMINED = range(3)
EVERYTHING, SERVER = 0xffffffff, 0  # global IDs
NOTHING, LOOK_ONLY, ALL = 0, 0o500, 0o710  # bits of PipeWire's permissions
TONES = {"pw-play": (1700, 0.3), "paplay": (2600, 0.2), "ffplay": (3500, 0.1)}


def let(machine, what, mask):
    """Sets the program's permissions for an object."""
    if what == "metadata":
        what = machine.graph.objects("Metadata", **{"metadata.name": "default"})[0]["id"]
    client = machine.graph.objects("Client", **{"application.name": "Sonvel"})[0]["id"]
    machine.run("pw-cli", "permissions", client, what, mask)


def wait_for_permission(holder, status, within):
    wait_until(lambda: holder.tell("permission") == status, within, f"permission {status}")


@pytest.fixture
def players(machine):
    """Starts three players on the default device and one that its user moved to the headphones; returns its
    pid and theirs."""
    playing = [machine.play(program, *tone) for program, tone in TONES.items()]
    moved = machine.player(1000, 0.4)
    machine.move(moved.node, "Headphones")
    wait_for_all(machine, 1, 5)
    return moved.pid, [player.pid for player in playing]


def wait_for_all(machine, gain, within):
    """Waits until each is heard at its level times gain where its user wants it."""
    deadline = time.monotonic() + within
    machine.sink("Headphones").wait_for_tone(1000, 0.4 * gain, within)
    for frequency, amplitude in TONES.values():
        machine.sink().wait_for_tone(frequency, amplitude * gain, deadline - time.monotonic() + 0.4)


def take(holder, players):
    moved, others = players
    holder.add(moved, 0.25, "Headphones")
    for pid in others:
        holder.add(pid, 0.25)


def test_restricting_server_denies_until_it_grants(machine, start_holder):
    holder = start_holder(environment=machine.restriction())
    machine.player(amplitude=0.4)
    sink = machine.sink()
    sink.wait_for_tone(1000, 0.4)
    wait_for_permission(holder, DENIED, 2)
    assert holder.tell("take", 0.5) == 0
    sink.wait_for_tone(1000, 0.4)
    assert not machine.graph.of_ours()

    let(machine, EVERYTHING, ALL)
    wait_for_permission(holder, GRANTED, 2)
    assert holder.tell("take", 0.5) == 1
    sink.wait_for_tone(1000, 0.2)
    assert holder.finish() == 0
    sink.wait_for_tone(1000, 0.4)


def test_rejecting_server_denies(machine, start_holder):
    text = Path("/usr/share/pipewire/pipewire.conf").read_text()
    if "#access.rejected = [ ]" not in text:
        pytest.skip("this server rejects no program by name")
    machine.write("config/pipewire/pipewire.conf",
                  text.replace("#access.rejected = [ ]", 'access.rejected = [ "tap-holder" ]'))
    machine.restart("pipewire")
    wait_for_permission(start_holder(), DENIED, 20)


def test_server_that_decides_nothing_denies(machine, start_holder):
    machine.kill("wireplumber")  # it decides on permissions
    holder = start_holder(environment=machine.restriction())
    assert holder.tell("permission") != GRANTED
    wait_for_permission(holder, DENIED, 20)


@pytest.mark.parametrize("what, mask", [(SERVER, NOTHING), (EVERYTHING, LOOK_ONLY), ("metadata", LOOK_ONLY)])
def test_withdrawn_rights_leave_each_at_its_own_output_until_they_are_given_again(machine, holder, players, what,
                                                                                  mask):
    take(holder, players)
    wait_for_all(machine, 0.25, 5)
    assert holder.tell("permission") == GRANTED
    let(machine, what, mask)
    wait_for_permission(holder, DENIED, 2)
    denied_at = time.monotonic()
    assert holder.tell("teardown") == [True] * 4
    wait_for_all(machine, 1, 6)
    wait_until(lambda: not machine.graph.of_ours(), what="a graph without anything of ours")

    # The server accepts every new connection. Longer than the permission poll (5 s), so that it sees the
    # loss.
    wait_for_permission(holder, GRANTED, 8)
    assert time.monotonic() - denied_at > 5
    take(holder, players)
    wait_for_all(machine, 0.25, 5)


def test_rights_that_are_withdrawn_without_a_teardown_are_taken_up_again(machine, holder, players):
    take(holder, players)
    wait_for_all(machine, 0.25, 5)
    let(machine, EVERYTHING, LOOK_ONLY)
    wait_for_all(machine, 1, 6)
    wait_for_all(machine, 0.25, 10)
