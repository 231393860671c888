"""Routes that the user has set, and the session manager's memory of them, stay unchanged."""

import itertools
import json
import re

from support.waiting import wait_until

MUSIC = {"media.role": "Music"}
MARKERS = itertools.count()


def targets(session):
    """The lines with targets in the session manager's file."""
    folder = session.folder / "state/wireplumber"
    for name in ("restore-stream", "stream-properties"):  # WirePlumber 0.4, 0.5
        if (folder / name).exists():
            return [line for line in (folder / name).read_text().splitlines()
                    if re.search(r':target=|"target"', line)]
    return []


def parsed(line):
    """WirePlumber 0.5 writes the properties of a stream in any order."""
    name, _, value = line.partition("=")
    return (name, json.loads(value)) if value.startswith("{") else line


def remembered(session):
    """What is remembered after everything so far. The file is written with a delay, so a stream that is moved
    last marks its completeness."""
    role = f"Marker{next(MARKERS)}"
    marker = session.player(signal="silence", **{"media.role": role})
    session.move(marker.node, "Speakers")
    wait_until(lambda: any(role in line for line in targets(session)), what="the session manager's file")
    marker.finish()
    return [parsed(line) for line in targets(session) if "Marker" not in line]


def test_route_that_the_user_had_set_comes_back_and_is_still_remembered(session, holder):
    for keys in (("target.node", "target.object"), ("target.node",), ("target.object",)):
        player = session.player(1000, 0.3, **MUSIC)
        session.move(player.node, "Headphones", keys)
        session.sink("Headphones").wait_for_tone(1000, 0.3)
        before = remembered(session)
        assert len(before) == 1
        holder.add(player.pid, 0.5)
        session.sink("Headphones").wait_for_tone(1000, 0.15)
        session.sink().wait_for_zeros()
        assert holder.tell("remove", player.pid)
        session.sink("Headphones").wait_for_tone(1000, 0.3)
        session.sink().wait_for_zeros()
        assert remembered(session) == before
        player.finish()


def test_route_that_was_remembered_stays_so_while_and_after_a_tap(session, holder):
    earlier = session.player(**MUSIC)
    session.move(earlier.node, "Headphones")
    before = remembered(session)
    assert len(before) == 1
    earlier.finish()
    player = session.player(1000, 0.3, **MUSIC)
    session.sink("Headphones").wait_for_tone(1000, 0.3)
    holder.add(player.pid, 0.5)
    session.sink("Headphones").wait_for_tone(1000, 0.15)
    assert remembered(session) == before
    assert holder.tell("remove", player.pid)
    session.sink("Headphones").wait_for_tone(1000, 0.3)
    assert remembered(session) == before


def test_killed_run_leaves_route_and_memory_as_they_were(session, start_holder):
    player = session.player(1000, 0.3, **MUSIC)
    session.move(player.node, "Headphones")
    session.sink("Headphones").wait_for_tone(1000, 0.3)
    before = remembered(session)
    holder = start_holder()
    holder.tell("take", 0.5)
    session.sink("Headphones").wait_for_tone(1000, 0.15)
    holder.kill()
    session.sink("Headphones").wait_for_tone(1000, 0.3)
    assert remembered(session) == before

    start_holder().app(player.pid)
    session.sink("Headphones").wait_for_tone(1000, 0.3)
    assert remembered(session) == before


def test_leftovers_of_a_killed_run_are_swept_by_the_next(session, start_holder):
    # As after a kill of program and guardian: the stream's target is a tap that no longer exists.
    player = session.player(1000, 0.3, **MUSIC)
    session.move(player.node, "Headphones")
    session.sink("Headphones").wait_for_tone(1000, 0.3)
    target = session.graph.metadata(player.node, "target.object")
    session.graph.set_metadata(player.node, "sonvel.target.object", target)
    session.graph.set_metadata(player.node, "target.object", "sonvel-tap-1-2-3", "Spa:String")
    session.sink().wait_for_tone(1000, 0.3)
    start_holder()
    session.sink("Headphones").wait_for_tone(1000, 0.3)
    wait_until(lambda: not session.graph.of_ours(), what="a graph without anything of ours")


def test_stream_that_the_user_moves_while_it_is_tapped_is_heard_there_at_once_and_afterwards(session, holder):
    player = session.player(1000, 0.3, **MUSIC)
    headphones = session.sink("Headphones")
    holder.add(player.pid, 0.5)
    session.sink().wait_for_tone(1000, 0.15)
    session.move(player.node, "Headphones")
    headphones.wait_for_tone(1000, 0.15, within=1)
    session.sink().wait_for_zeros()
    assert holder.tell("remove", player.pid)
    headphones.wait_for_tone(1000, 0.3)
