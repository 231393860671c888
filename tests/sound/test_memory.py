"""Routes that the user has set, and the session manager's memory of them, stay unchanged."""

import itertools
import json
import re

from support.waiting import wait_until

MUSIC = {"media.role": "Music"}
MARKERS = itertools.count()


def targets(machine):
    """The lines with targets in the session manager's file."""
    folder = machine.folder / "state/wireplumber"
    for name in ("restore-stream", "stream-properties"):  # WirePlumber 0.4, 0.5
        if (folder / name).exists():
            return [line for line in (folder / name).read_text().splitlines()
                    if re.search(r':target=|"target"', line)]
    return []


def parsed(line):
    """WirePlumber 0.5 writes the properties of a stream in any order."""
    name, _, value = line.partition("=")
    return (name, json.loads(value)) if value.startswith("{") else line


def remembered(machine):
    """What is remembered after everything so far. The file is written with a delay, so a stream that is moved
    last marks its completeness."""
    role = f"Marker{next(MARKERS)}"
    marker = machine.player(signal="silence", **{"media.role": role})
    machine.move(marker.node, "Speakers")
    wait_until(lambda: any(role in line for line in targets(machine)), what="the session manager's file")
    marker.finish()
    return [parsed(line) for line in targets(machine) if "Marker" not in line]


def test_route_that_the_user_had_set_comes_back_and_is_still_remembered(machine, holder):
    for keys in (("target.node", "target.object"), ("target.node",), ("target.object",)):
        player = machine.player(1000, 0.3, **MUSIC)
        machine.move(player.node, "Headphones", keys)
        machine.sink("Headphones").wait_for_tone(1000, 0.3)
        before = remembered(machine)
        assert len(before) == 1
        holder.add(player.pid, 0.5)
        machine.sink("Headphones").wait_for_tone(1000, 0.15)
        machine.sink().wait_for_zeros()
        assert holder.tell("remove", player.pid)
        machine.sink("Headphones").wait_for_tone(1000, 0.3)
        machine.sink().wait_for_zeros()
        assert remembered(machine) == before
        player.finish()


def test_route_that_was_remembered_stays_so_while_and_after_a_tap(machine, holder):
    earlier = machine.player(**MUSIC)
    machine.move(earlier.node, "Headphones")
    before = remembered(machine)
    assert len(before) == 1
    earlier.finish()
    player = machine.player(1000, 0.3, **MUSIC)
    machine.sink("Headphones").wait_for_tone(1000, 0.3)
    holder.add(player.pid, 0.5)
    machine.sink("Headphones").wait_for_tone(1000, 0.15)
    assert remembered(machine) == before
    assert holder.tell("remove", player.pid)
    machine.sink("Headphones").wait_for_tone(1000, 0.3)
    assert remembered(machine) == before


def test_killed_run_leaves_route_and_memory_as_they_were(machine, start_holder):
    player = machine.player(1000, 0.3, **MUSIC)
    machine.move(player.node, "Headphones")
    machine.sink("Headphones").wait_for_tone(1000, 0.3)
    before = remembered(machine)
    holder = start_holder()
    holder.tell("take", 0.5)
    machine.sink("Headphones").wait_for_tone(1000, 0.15)
    holder.kill()
    machine.sink("Headphones").wait_for_tone(1000, 0.3)
    assert remembered(machine) == before

    start_holder().app(player.pid)
    machine.sink("Headphones").wait_for_tone(1000, 0.3)
    assert remembered(machine) == before


def test_leftovers_of_a_killed_run_are_swept_by_the_next(machine, start_holder):
    # As after a kill of program and guardian: the stream's target is a tap that no longer exists.
    player = machine.player(1000, 0.3, **MUSIC)
    machine.move(player.node, "Headphones")
    machine.sink("Headphones").wait_for_tone(1000, 0.3)
    target = machine.graph.metadata(player.node, "target.object")
    machine.graph.set_metadata(player.node, "sonvel.target.object", target)
    machine.graph.set_metadata(player.node, "target.object", "sonvel-tap-1-2-3", "Spa:String")
    machine.sink().wait_for_tone(1000, 0.3)
    start_holder()
    machine.sink("Headphones").wait_for_tone(1000, 0.3)
    wait_until(lambda: not machine.graph.of_ours(), what="a graph without anything of ours")


def test_stream_that_the_user_moves_while_it_is_tapped_is_heard_there_at_once_and_afterwards(machine, holder):
    player = machine.player(1000, 0.3, **MUSIC)
    headphones = machine.sink("Headphones")
    holder.add(player.pid, 0.5)
    machine.sink().wait_for_tone(1000, 0.15)
    machine.move(player.node, "Headphones")
    headphones.wait_for_tone(1000, 0.15, within=1)
    machine.sink().wait_for_zeros()
    assert holder.tell("remove", player.pid)
    headphones.wait_for_tone(1000, 0.3)
