"""Injects faults while three players are under control of the real program, and prints how long it takes
until all are heard right again: at their rows' volumes, or unchanged where Sonvel can't control them.

faults.py [FAULT...]   all by default; exits non-zero if something is not heard right in the end"""
import json
import os
import signal
import subprocess
import sys
import time
from contextlib import contextmanager

import numpy

from measuring import wait_for_rest
from support.bus import BIN
from support.desktop import Application, Desktop, example_players
from support.hearing import RATE, decibels
from support.lines import LineProcess
from support.machine import sink_properties
from support.waiting import wait_until

GAIN = 0.5
TOLERANCE = 0.2  # dB
WINDOW, HOP = 4096, 512  # frames
STEADY, LONGEST = 0.5, 60  # seconds: how long all must be right; time limit
FOREIGN_NODES = 100  # the session manager alone is at rest within a few seconds, also with the long texts
BROKEN_NAME = (b"\xff\xfe\xc3\x28\xed\xa0\x80\x1b[31m" * 400)[:4096].decode("utf-8", "surrogateescape")  # ends in the middle of a character
LONG = "abc\u00e9" * 13107  # 64 KiB
LONG_TEXTS = {"media__name": LONG, "node__description": LONG, "media__title": LONG}
FAKE_TIME = "/usr/lib/x86_64-linux-gnu/faketime/libfaketimeMT.so.1"
OTHER_POLICY = {
    "main.lua.d/60-next.lua":  # WirePlumber 0.4
        'stream_defaults.properties["restore-target"] = false\nstream_defaults.properties["restore-props"] = false\n',
    "policy.lua.d/60-next.lua": 'default_policy.policy["follow"] = false\n',
    "wireplumber.conf.d/60-next.conf":  # WirePlumber 0.5
        "wireplumber.settings = { node.stream.restore-target = false, node.stream.restore-props = false,\n"
        "  linking.follow-default-target = false }\n"}
SMALL_HOMES = {"On a full disk": "head -c 1M /dev/zero > {0}/full; true", "With a read-only home": "mount -o remount,ro {0}"}
_TAPER = numpy.blackman(WINDOW)
FAULTS = {}


def fault(function):
    """Registers a fault, a generator of rows, under its function's name."""
    FAULTS[function.__name__.replace("_", "-")] = function
    return function


def amplitude(frequency, samples, rate):
    tone = numpy.exp(-2j * numpy.pi * frequency / rate * numpy.arange(WINDOW))
    return 2 * abs(numpy.dot(samples * _TAPER, tone)) / _TAPER.sum()


class Stand:
    """A desktop with players that the real program plays at half their level, with its panel closed."""

    def __init__(self, desktop, program=(BIN / "sonvel",), environment=None):
        self.desktop, self.machine = desktop, desktop.machine
        self.players, self.rate = example_players(), RATE
        self.environment = desktop.environment | (environment or {})
        for player in self.players:
            desktop.play(player)
        self.start(*program)
        self.halve(*self.players)

    def start(self, *program):
        self.sonvel = self.machine.start(*program, "--background", environment=self.environment)
        wait_until(lambda: self.command("list") is not None, what="the program")

    def command(self, *words):
        """What a command prints; None if it fails."""
        done = subprocess.run([BIN / "sonvel", *words], env=self.environment, capture_output=True, text=True,
                              errors="replace", timeout=60)
        return done.stdout if done.returncode == 0 else None

    def halve(self, *players):
        for player in players:
            wait_until(lambda: self.command("volume", player.name, f"{GAIN:.0%}") is not None, LONGEST, player.name)
            player.gain = GAIN
        self.wait_until_right()

    def is_right(self, player, samples):
        return len(samples) == WINDOW and abs(decibels(
            amplitude(player.frequency, samples, self.rate) / player.level)) < TOLERANCE

    def wrong(self):
        """The names of the players that are not heard right now."""
        heard = {}
        for name in {player.sink for player in self.players}:
            sink = self.machine.sink(name)
            heard[name] = sink.since(max(0, sink.mark() - WINDOW)).left[:WINDOW]
        return [player.name for player in self.players if not self.is_right(player, heard[player.sink])]

    def wait_until_right(self):
        """Waits until all are heard right and stay so."""
        start, since = time.monotonic(), None
        while since is None or time.monotonic() < since + STEADY:
            wrong = self.wrong()
            ended = [player.name for player in self.players if player.process and player.process.poll() is not None]
            assert not ended, f"ended: {', '.join(ended)}"
            since = None if wrong else since or time.monotonic()
            assert time.monotonic() < start + LONGEST, f"not heard right: {', '.join(wrong)}"
            time.sleep(0.01)

    def seconds_wrong(self, marks):
        """The longest time since then for which one of the first three players was not heard right."""
        longest = 0
        for player in self.players[:3]:
            heard = self.machine.sink(player.sink).since(marks[player.sink]).left
            bad = sum(not self.is_right(player, heard[end - WINDOW:end]) for end in range(WINDOW, len(heard), HOP))
            longest = max(longest, bad * HOP - WINDOW)  # one bad frame spoils every window that contains it
        return longest / RATE

    def row(self, what, do, gain=GAIN, began=None):
        """Calls do(), and waits until all are heard right at this gain. The time counts from the end of do(),
        unless it began earlier."""
        for player in self.players:
            player.gain = gain
        marks = {name: sink.mark() for name, sink in self.machine.sinks.items()}
        listeners = list(self.machine.sinks.values())
        do()
        began = began or time.monotonic()
        self.wait_until_right()
        seconds = max(0, time.monotonic() - STEADY - began)
        is_same = listeners == list(self.machine.sinks.values())
        return what, f"{gain:.0%}", seconds, self.seconds_wrong(marks) if is_same else None

    def replay(self, *names):
        """Restarts the players, as users do whose players have ended or hang."""
        for player in self.players:
            if player.process and (player.name in names or not names):  # a tone player goes on by itself
                player.process.kill()
                player.process.wait()
                self.desktop.play(player)

    def add_players(self, first, count, **properties):
        """Starts this many players at once, and waits until each has its row and is heard at half its level."""
        added = [Application(f"player-{number}", "tone-player", 3000 + 100 * number, 0.01, "") for number in
                 range(first, first + count)]
        for player in added:
            self.tone_player = self.machine.player(player.frequency, player.amplitude, player.name, **properties)
        self.players += added
        self.halve(*added)

    def rest(self):
        """Waits until the session manager rests. The players start anew: their files last two minutes. Returns the
        time at which it rested."""
        wait_for_rest(self.machine, 4 * LONGEST)
        rested = time.monotonic()
        self.replay()
        self.wait_until_right()
        return rested

    def seconds_to_list(self):
        start = time.monotonic()
        assert self.command("list") is not None
        return time.monotonic() - start

    def expect_nothing_left(self):
        wait_until(lambda: not self.machine.graph.of_ours(), what="the end of all that is ours")


def add_foreign_nodes(machine):
    """Nodes that carry no application's sound."""
    maker = machine.start("pw-cli", stdin=subprocess.PIPE, stdout=subprocess.DEVNULL, text=True, bufsize=1)

    def count():
        return sum("foreign-" in node.get("node.name", "") for node in machine.graph.objects("Node"))

    for number in range(FOREIGN_NODES):
        node = sink_properties(f"foreign-{number}", 0) | {"media.class": "Audio/Sink/Internal"}
        maker.stdin.write(f"create-node adapter {json.dumps(node)}\n")
        wait_until(lambda made=number: count() > made - 20, LONGEST, "foreign nodes")
    wait_until(lambda: count() == FOREIGN_NODES, LONGEST, "all foreign nodes")


def add_long_players(machine):
    for number in range(1, 38):
        machine.player(3000 + 100 * number, 0.01, f"player-{number}", **LONG_TEXTS)


def seconds_without_sonvel(*steps):
    """How long the session manager is busy with the last of these steps beside the same players."""
    with Desktop(is_read=False) as desktop:
        for player in example_players():
            desktop.play(player)
            desktop.machine.sink(player.sink)
        for step in steps:
            start = time.monotonic()
            step(desktop.machine)
            wait_for_rest(desktop.machine, 4 * LONGEST)
        return time.monotonic() - start


@contextmanager
def stand(**options):
    with Desktop(is_read=False) as desktop:
        yield Stand(desktop, **options)


@fault
def killed():
    with stand() as one:
        yield one.row("Sonvel killed", one.sonvel.kill, 1)
        one.expect_nothing_left()


@fault
def stopped():
    with stand() as one:
        start = time.monotonic()
        yield one.row("Sonvel stopped (SIGSTOP)", lambda: one.sonvel.send_signal(signal.SIGSTOP), 1)
        time.sleep(max(0, start + 10 - time.monotonic()))
        yield one.row("  goes on after ten seconds", lambda: one.sonvel.send_signal(signal.SIGCONT))
        yield one.row("  and is killed", one.sonvel.kill, 1)
        one.expect_nothing_left()


@fault
def server():
    with stand() as one:
        one.machine.restart("pipewire")
        yield one.row("PipeWire killed and restarted: from the players' new start", one.replay)


@fault
def session_manager():
    with stand() as one:
        yield one.row("Session manager killed and restarted", lambda: one.machine.restart("wireplumber"))


@fault
def other_session_manager():
    with stand() as one:
        for name, text in OTHER_POLICY.items():
            one.machine.write(f"config/wireplumber/{name}", text)
        yield one.row("Session manager restarted with another policy", lambda: one.machine.restart("wireplumber"))


@fault
def hanging_session_manager():
    with stand() as one:
        start = time.monotonic()
        manager, player = one.machine.processes["wireplumber"], one.players[0]
        manager.send_signal(signal.SIGSTOP)
        yield one.row("Session manager stopped (SIGSTOP), each player set to 100 %",
                      lambda: [one.command("volume", each.name, "100%") for each in one.players], 1)
        one.command("route", player.name, "Headphones")
        player.sink = "Headphones"
        time.sleep(max(0, start + 10 - time.monotonic()))
        yield one.row("  goes on after ten seconds, with a route chosen meanwhile",
                      lambda: manager.send_signal(signal.SIGCONT), 1)


@fault
def pulse_server():
    with stand() as one:
        one.machine.restart("pipewire-pulse")
        yield one.row("pipewire-pulse killed and restarted: from its players' new start",
                      lambda: one.replay("Jukebox", "Cinema"))


@fault
def many_players():
    with stand() as one:
        yield one.row("40 players more at once, each set to a half", lambda: one.add_players(1, 40),
                      began=time.monotonic())


@fault
def flicker():
    with stand() as one:
        one.add_players(1, 1)
        player = one.players[-1]

        def open_and_close():
            for _ in range(500):
                one.tone_player.open("tone", frequency=player.frequency, amplitude=player.amplitude)

        yield one.row("A fourth player opens and closes a stream 500 times", open_and_close)


@fault
def clock():
    with stand() as one:
        for key, value in (("rate", 44100), ("rate", RATE), ("quantum", 64), ("quantum", 2048), ("quantum", 0)):
            one.rate = 44100 if value == 44100 else RATE
            yield one.row(f"clock.force-{key} set to {value}", lambda: one.machine.run(
                "pw-metadata", "-n", "settings", 0, f"clock.force-{key}", value))


@fault
def renamed():
    with stand() as one:
        one.add_players(1, 1)
        yield one.row("A player renames itself", lambda: one.tone_player.tell("rename", "somebody-else"))


@fault
def broken_names():
    with Desktop(is_read=False) as desktop:
        sink = json.dumps(sink_properties(BROKEN_NAME, 500), ensure_ascii=False)
        desktop.machine.write("config/pipewire/pipewire.conf.d/60-broken.conf",
                              f"context.objects = [ {{ factory = adapter args = {sink} }} ]")
        desktop.machine.restart("pipewire")
        one = Stand(desktop)
        one.add_players(1, 1, node__name=BROKEN_NAME, media__name=BROKEN_NAME, application__name=BROKEN_NAME)
        yield one.row("A player and a device with names of 4,096 bytes of invalid UTF-8",
                      lambda: one.tone_player.tell("rename", BROKEN_NAME.replace(" ", "")))


@fault
def homes():
    for what, prepare in SMALL_HOMES.items():
        folder = "$HOME"
        script = f"mount -t tmpfs -o size=64k none {folder} && mkdir {folder}/.config && {prepare.format(folder)} && exec $0 $@"
        with stand(program=("unshare", "-m", "sh", "-c", script, BIN / "sonvel"), environment={
                name: "" for name in ("XDG_CONFIG_HOME", "XDG_STATE_HOME", "XDG_CACHE_HOME")}) as one:
            yield one.row(what, lambda: one.command("list"))
            yield one.row("  asked to quit", one.sonvel.terminate, 1)
            assert one.sonvel.wait(20) == 0


@fault
def time_set_back():
    with Desktop(is_read=False) as desktop:
        file = desktop.machine.folder / "time"
        file.write_text("+0")
        one = Stand(desktop, environment={"LD_PRELOAD": FAKE_TIME, "FAKETIME_TIMESTAMP_FILE": str(file),
                                          "FAKETIME_NO_CACHE": "1", "FAKETIME_DONT_FAKE_MONOTONIC": "1"})
        yield one.row("The clock of Sonvel set back an hour", lambda: file.write_text("-1h"))
        one.players[0].process.kill()
        yield one.row("  and a player starts anew", lambda: one.replay("Records"))


@fault
def foreign_nodes():
    alone = seconds_without_sonvel(add_foreign_nodes)
    with stand() as one:
        began = time.monotonic()
        yield one.row(f"{FOREIGN_NODES} foreign nodes", lambda: add_foreign_nodes(one.machine))
        busy = one.rest() - began
        yield one.row(f"  session manager at rest after {busy:.1f} s, {alone:.1f} without Sonvel; listed in "
                      f"{one.seconds_to_list():.2f} s; Sonvel killed", one.sonvel.kill, 1)


@fault
def everything():
    alone = seconds_without_sonvel(add_foreign_nodes, add_long_players)
    with stand() as one:
        add_foreign_nodes(one.machine)
        one.rest()
        began = time.monotonic()
        yield one.row(f"Beside {FOREIGN_NODES} foreign nodes 37 players more, 64 KiB in each of three properties",
                      lambda: one.add_players(1, 37, **LONG_TEXTS), began=began)
        busy = one.rest() - began
        yield one.row(f"  session manager at rest after {busy:.1f} s, {alone:.1f} without Sonvel; listed in "
                      f"{one.seconds_to_list():.2f} s; Sonvel killed", one.sonvel.kill, 1)


def main(names):
    lost = 0
    print(f"{'fault':96} {'heard at':>8} {'after s':>8} {'wrong s':>8}")
    for name in names or FAULTS:
        try:
            for what, gain, seconds, gap in FAULTS[name]():
                print(f"{what:96} {gain:>8} {seconds:8.2f} {'' if gap is None else f'{gap:.2f}':>8}", flush=True)
        except (AssertionError, subprocess.SubprocessError) as error:
            lost += 1
            print(f"{name:96} LOST: {str(error)[:200]}", flush=True)
    return lost


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]) != 0)
