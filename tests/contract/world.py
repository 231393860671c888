#!/usr/bin/python3
"""world.py COMMAND [ARGUMENT]...: runs a test program on a machine of its own, and serves its requests:
lines at the descriptor SONVEL_WORLD with the name and arguments of a method of World."""

import os
import socket
import sys
from pathlib import Path

sys.dont_write_bytecode = True
sys.path.insert(0, str(Path(__file__).parents[1]))
os.environ["SONVEL_BIN"] = str(Path(sys.argv[1]).resolve().parent)

from support.machine import Machine
from support.waiting import wait_until


class World:
    def __init__(self, machine):
        self.machine = machine
        self.sinks = [machine.sink(name) for name in ("Speakers", "Headphones")]
        self.players = {}

    def start(self, frequency, amplitude, name=""):
        player = self.machine.player(frequency, amplitude, client={"application.name": name} if name else {})
        self.players[str(player.pid)] = player
        return player.pid

    def open(self, pid, frequency, amplitude, fixed=""):
        self.players[pid].open(f"tone-{frequency}", frequency=frequency, amplitude=amplitude,
                               **({"node.dont-reconnect": "true"} if fixed else {}))

    def play(self, pid):
        self.players[pid].tell("play", "tone")

    def pause(self, pid):
        self.players[pid].tell("pause", "tone")

    def end(self, pid):
        self.players[pid].finish()

    def default(self, device):
        self.machine.set_default_sink(device)

    def audible(self, device, frequency, amplitude):
        self.machine.sink(device).wait_for_tone(float(frequency), float(amplitude))
        return True

    def silent(self, device):
        self.machine.sink(device).wait_for_zeros()
        return True

    def mark(self):
        self.marks = [sink.mark() for sink in self.sinks]

    def silent_since_mark(self):
        return not any(sink.since(mark).left.any() for sink, mark in zip(self.sinks, self.marks))

    def cycles(self):
        for sink in self.sinks:
            sink.wait_for_frames(8192)

    def clean(self):
        wait_until(lambda: not self.machine.graph.of_ours(), what="a graph without anything of ours")
        return True


def answer(world, line):
    verb, *arguments = line.split()
    try:
        return getattr(world, verb)(*arguments)
    except Exception as error:
        return str(error).replace("\n", " ")


if "--gtest_list_tests" in sys.argv:
    os.execv(sys.argv[1], sys.argv[1:])
with Machine() as machine:
    ours, theirs = socket.socketpair()
    world = World(machine)
    program = machine.start(*sys.argv[1:], stdin=None, stdout=None, stderr=None, pass_fds=[theirs.fileno()],
                            environment={"SONVEL_WORLD": str(theirs.fileno())})
    theirs.close()
    for line in ours.makefile():
        ours.sendall(f"{answer(world, line)}\n".encode())
    sys.exit(program.wait())
