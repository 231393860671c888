"""The sound after the loss of daemons, devices, objects or the program itself."""

import time

import pytest
from support.waiting import wait_until


def take(machine, holder):
    """A player that is controlled at half its level."""
    player = machine.player(amplitude=0.4)
    holder.add(player.pid, 0.5)
    machine.sink().wait_for_tone(1000, 0.2)
    return player


def test_restart_of_the_session_manager_is_a_pause(machine, holder):
    player = take(machine, holder)
    machine.restart("wireplumber")
    machine.sink().wait_for_tone(1000, 0.2)
    assert holder.tell("remove", player.pid)
    machine.sink().wait_for_tone(1000, 0.4)
    assert not machine.graph.of_ours()


def test_restart_of_the_server_leaves_nothing_to_undo_and_all_to_be_done_again(machine, holder):
    player = take(machine, holder)
    machine.restart("pipewire")
    assert holder.tell("remove", player.pid)
    take(machine, holder)


def taps_and_links(machine):
    """The taps' nodes, and the links from them to the device."""
    nodes = [node for node in machine.graph.objects("Node") if node["node.name"].startswith("sonvel-tap")]
    numbers = {node["id"] for node in nodes}
    return nodes, [link for link in machine.graph.objects("Link") if link["link.output.node"] in numbers]


@pytest.mark.parametrize("which", [0, 1])
def test_node_or_link_that_the_server_loses_is_made_again(machine, holder, which):
    take(machine, holder)

    def ours():
        return {one["object.serial"]: one["id"] for one in taps_and_links(machine)[which]}

    lost, number = next(iter(ours().items()))
    machine.run("pw-cli", "destroy", number)
    wait_until(lambda: lost not in ours(), what="the end of the object")
    machine.sink().wait_for_tone(1000, 0.2)


def test_nodes_have_a_connection_of_their_own(machine, holder):
    # The session manager waits for our answer while it sets up a node, and we wait for its answer while we bind the
    # metadata. On one connection both could wait for ever.
    take(machine, holder)
    node, *others = sum(taps_and_links(machine), [])
    assert len(others) == 2 and node["client.id"] not in {link["client.id"] for link in others}


def test_stream_that_ends_in_a_tap_leaves_nothing(machine, holder):
    # An entry that stays under its ID would send the next stream with that ID into the tap.
    take(machine, holder).kill()
    wait_until(lambda: not [entry for entry in machine.graph.of_ours() if isinstance(entry, tuple)],
               what="metadata without anything of ours")
    machine.player(amplitude=0.4)
    machine.sink().wait_for_tone(1000, 0.4)


def test_dead_or_hanging_server_is_answered_in_time(machine, holder):
    player = take(machine, holder)

    def expect(count):
        """This many applications, in time: a call takes two seconds at most, and another may be before it."""
        start = time.monotonic()
        assert len(holder.tell("apps")) == count
        assert time.monotonic() - start < 5

    machine.stop("wireplumber")
    machine.start("pw-metadata", name="reader")  # after it the metadata is read again, which is not answered
    start = time.monotonic()
    while time.monotonic() < start + 3:
        expect(1)
    machine.sink().wait_for_tone(1000, 0.2)
    machine.resume("wireplumber")
    machine.stop("pipewire")
    expect(1)
    machine.resume("pipewire")
    machine.sink().wait_for_tone(1000, 0.2)
    machine.kill("pipewire")
    expect(0)
    assert holder.tell("remove", player.pid)


@pytest.mark.parametrize("end", ["kill", "finish"])
def test_end_of_the_program_leaves_each_at_its_own_route(machine, holder, end):
    tones = {1000: 0.3, 1700: 0.2, 2600: 0.1}
    for frequency, amplitude in tones.items():
        machine.player(frequency, amplitude)
    sink = machine.sink()
    for frequency, amplitude in tones.items():
        sink.wait_for_tone(frequency, amplitude)
    assert holder.tell("take", 0.25) == 3
    for frequency, amplitude in tones.items():
        sink.wait_for_tone(frequency, amplitude / 4)

    assert getattr(holder, end)() in (0, None)
    ended = time.monotonic()
    for frequency, amplitude in tones.items():
        sink.wait_for_tone(frequency, amplitude, within=ended + 1.5 - time.monotonic())
    wait_until(lambda: not machine.graph.of_ours(), within=1, what="a graph without anything of ours")
