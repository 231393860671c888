"""What our code does on the real-time thread, during the cycles of a real sound server."""

import signal
import struct

import pytest
from support.machine import BINARIES
from support.waiting import wait_until

ENDS = {"heap": 99, "lock": 99, "call": -signal.SIGSYS}  # how the guard ends a program that does this


@pytest.mark.machine(quantum=256)  # many cycles
@pytest.mark.parametrize("seed", ["", *ENDS, "page"])
def test_cycles_do_nothing_but_compute(machine, start_holder, seed):
    report = machine.folder / "realtime"
    report.write_bytes(bytes(32))
    environment = {"LD_PRELOAD": str(BINARIES / "librealtime-guard.so"), "REALTIME_REPORT": str(report)}
    players = [machine.player(1000, 0.4), machine.player(1700, 0.2)]
    holder = start_holder(environment=environment | ({"REALTIME_SEED": seed} if seed else {}))

    def counts():
        return struct.unpack("4Q", report.read_bytes())

    def run_cycles():
        goal = counts()[1] + 200
        wait_until(lambda: counts()[1] >= goal or holder.process.poll() is not None, what="cycles")

    machine.sink()
    if seed in ENDS:
        holder.ask("take", 0.5)
        assert holder.process.wait(20) == ENDS[seed]
        return
    holder.tell("probe")
    for player in players:
        holder.add(player.pid, 0.5)
    for words in (["gain", 0.25], ["mute", 1], ["mute", 0], ["output", "Headphones"], ["output"]):
        run_cycles()
        holder.tell(words[0], players[0].pid, *words[1:])
    run_cycles()
    players[1].kill()
    run_cycles()
    holder.tell("remove", players[0].pid)
    assert holder.finish() == 0
    nodes, cycles, faults, first_faults = counts()
    print(f"{nodes} nodes, {cycles} cycles, {faults} page faults, and {first_faults} in first cycles")
    assert nodes >= 5 and cycles > 1000
    assert bool(faults) == (seed == "page")
