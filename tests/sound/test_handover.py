"""What the sink hears, sample by sample, while an application is taken over, starts again and is given back.

On a busy machine a player sometimes misses a cycle, which looks like a fault of ours. Our own faults would
occur nearly every time, so each action is repeated."""

import numpy
import pytest
from support.hearing import faulty_frames

QUANTUM = 1024
SETTLED = 8 * QUANTUM  # frames


def hear_while(sink, act):
    """The recording of act() and some cycles after it. Repeats if frames were lost in the recording: then the
    whole graph missed a cycle, and the action can't be judged."""
    for _ in range(8):
        mark = sink.mark()
        act()
        sink.wait_for_frames(SETTLED)
        recording = sink.since(mark)
        if recording.complete:
            return recording
    raise AssertionError("cycles of the graph were lost each time")


def impulse_phases(recording, threshold):
    return {(recording.position + place) % 4800 for place in numpy.flatnonzero(recording.left > threshold)}


def test_tap_adds_no_sample_of_delay(machine, holder):
    player = machine.player(signal="impulses", amplitude=0.8)
    sink = machine.sink()
    sink.wait_for_frames(SETTLED)
    direct = impulse_phases(hear_while(sink, lambda: None), 0.7)
    holder.add(player.pid, 0.5)
    sink.wait_for_frames(SETTLED)
    assert len(direct) == 1
    assert impulse_phases(hear_while(sink, lambda: None), 0.35) == direct


def test_taking_over_and_giving_back_cost_at_most_one_cycle(machine, holder):
    player = machine.player(signal="counter", amplitude=0.5)
    sink = machine.sink()
    holder.app(player.pid)
    is_tapped = False

    def change_sides():
        nonlocal is_tapped
        holder.tell(*(["remove", player.pid] if is_tapped else ["add", player.pid, 1]))
        is_tapped = not is_tapped

    faults = [faulty_frames(hear_while(sink, change_sides).left, 0.5) for _ in range(20)]
    assert sum(frames <= QUANTUM for frames in faults) >= 18, faults


def test_others_on_the_device_lose_nothing(machine, holder):
    machine.player(signal="counter", amplitude=0.5)
    player = machine.player(signal="silence")  # its sound would disturb the measurement
    sink = machine.sink()
    holder.app(player.pid)

    def work():
        holder.tell("add", player.pid, 1)
        holder.tell("output", player.pid, "Headphones")
        holder.tell("output", player.pid)
        assert holder.tell("remove", player.pid)

    faults = [faulty_frames(hear_while(sink, work).left, 0.5) for _ in range(7)]
    assert faults.count(0) >= 4, faults


def test_probe_hears_and_is_not_heard(machine, holder):
    assert holder.tell("probe") is None
    player = machine.player(signal="counter", amplitude=0.5)
    sink = machine.sink()
    holder.app(player.pid)
    answers = []
    faults = [faulty_frames(hear_while(sink, lambda: answers.append(holder.tell("probe"))).left, 0.5)
              for _ in range(5)]
    assert faults.count(0) >= 3, faults
    assert all(answers) and not machine.graph.of_ours()

    player.tell("amplitude", "tone", 0)
    sink.wait_for_zeros()
    assert holder.tell("probe") is False


@pytest.mark.parametrize("program", ["pw-play", "paplay", "ffplay"])
def test_restart_is_never_heard_without_the_settings(machine, holder, program):
    for device in ("Speakers", "Headphones"):
        copy = f"player-of-{device}"
        player = machine.play(program, 1000, 0.4, copy)
        holder.add(player.pid, 0.5, device)
        speakers, ears = machine.sink("Speakers"), machine.sink(device)
        ears.wait_for_tone(1000, 0.2)
        for _ in range(2):
            player.kill()
            ears.wait_for_zeros()
            marks = speakers.mark(), ears.mark()
            player = machine.play(program, 1000, 0.4, copy)
            ears.wait_for_tone(1000, 0.2)
            for sink, mark in zip((speakers, ears), marks):
                loud = (abs(sink.since(mark).left) > 0.21).sum()
                assert loud <= (0 if program == "pw-play" else QUANTUM), sink.name
        # one more stream, which must not be stuck in the tap
        another = machine.play(program, 1700, 0.1, copy)
        ears.wait_for_tone(1700, 0.05)
        holder.tell("teardown")
        machine.sink().wait_for_tone(1000, 0.4)
        player.kill()
        another.kill()
