"""Random use of the real program on a virtual desktop: applications come and go and change what they play,
volumes, routes and the default device change, the panel opens and closes. Prints what the program holds at five
points of time, and fails if it holds more at the last than at the first.

soak.py SECONDS [SEED]"""
import os
import random
import re
import subprocess
import sys
import time
from pathlib import Path

from support.bus import BIN
from support.desktop import Desktop
from support.waiting import wait_until

NAMES = [f"player-{number}" for number in range(1, 9)]
WARM_UP = 0.3  # part of the time
MEASURED = 4  # times after that
SETTLING = 20  # seconds
ALLOWANCES = {"resident KiB": 2048, "private KiB": 2048,  # the allocator's share varies by about half of that
              "descriptors": 2}  # sometimes a piece of the server's shared memory is left; why is not known
SINKS = "Speakers", "Headphones"


class Soak:
    def __init__(self, desktop, seed):
        self.desktop, self.machine, self.random = desktop, desktop.machine, random.Random(seed)
        self.players, self.is_open, self.counts = {}, False, {}
        self.sonvel = desktop.start()
        self.icon = desktop.tray.icon()

    def command(self, *words):
        """The row may not exist yet, or no longer."""
        subprocess.run([BIN / "sonvel", *words], env=self.desktop.environment, capture_output=True, timeout=20)

    def start_player(self):
        name = self.random.choice(NAMES)
        if name not in self.players:
            self.players[name] = self.machine.player(300 * int(name[7:]), 0.05, name)

    def end_player(self):
        if self.players:
            name = self.random.choice(list(self.players))
            self.random.choice([self.players[name].kill, self.players[name].finish])()
            del self.players[name]

    def change_stream(self):
        if self.players:
            player = self.random.choice(list(self.players.values()))
            player.tell(self.random.choice(["pause", "play"]), "tone")

    def open_or_close(self):
        self.icon.click()
        self.is_open = not self.is_open

    def start_again(self):
        """Shows the panel of the running program."""
        self.command()
        self.is_open = True

    def set_volume(self):
        self.command("volume", self.random.choice(NAMES), str(self.random.randrange(201)))

    def mute(self):
        self.command("mute", self.random.choice(NAMES), "toggle")

    def route(self):
        self.command("route", self.random.choice(NAMES), self.random.choice(SINKS))

    def move_default(self):
        self.machine.set_default_sink(self.random.choice(SINKS))

    def live(self, seconds):
        actions = [self.start_player] * 4 + [self.end_player] * 3 + [self.change_stream, self.set_volume, self.mute,
                                                                   self.route, self.move_default, self.start_again]
        actions += [self.open_or_close] * 10
        deadline = time.monotonic() + seconds
        while time.monotonic() < deadline:
            action = self.random.choice(actions)
            action()
            self.counts[action.__name__] = self.counts.get(action.__name__, 0) + 1
            time.sleep(self.random.choice([0, 0.05, 0.3]))
            assert self.sonvel.poll() is None, "the program has ended"

    def rest(self):
        """What it holds when nothing plays and the panel is closed."""
        while self.players:
            self.end_player()
        self.command()  # shows the panel, even if it is open
        wait_until(self.desktop.display.is_painted, what="the panel")
        for words in ("reset", "everything"):  # otherwise it keeps standby taps for changed settings
            self.command(words)
        self.icon.click()
        self.is_open = False
        wait_until(self.desktop.display.is_black, what="an empty screen")
        try:
            wait_until(lambda: not self.machine.graph.of_ours(), what="the end of all taps")
        except AssertionError as error:
            raise AssertionError(f"{error}: {self.machine.graph.of_ours()}") from None
        time.sleep(2)  # lets delayed work finish
        return self.holdings()

    def holdings(self):
        pid, graph = self.sonvel.pid, self.machine.graph
        text = Path(f"/proc/{pid}/smaps_rollup").read_text()
        memory = {words: sum(int(size) for size in re.findall(rf"^{kind}: +(\d+)", text, re.M)) for words, kind in
                  (("resident KiB", "Rss"), ("private KiB", "(?:Private_Dirty|Swap)"))}
        objects = {f"server's {kind.lower()}s": len(graph.objects(kind)) for kind in ("Client", "Node", "Port", "Link")}
        return {**memory, "descriptors": len(os.listdir(f"/proc/{pid}/fd")),
                "threads": len(os.listdir(f"/proc/{pid}/task")), **objects, "entries of metadata": len(graph.entries())}


def grown(before, after):
    """What has become more, beyond what varies by itself."""
    return {what for what, then in before.items() if after[what] > then + ALLOWANCES.get(what, 0)}


def main(seconds, seed=1):
    with Desktop(is_read=False) as desktop:
        soak = Soak(desktop, seed)
        soak.live(WARM_UP * seconds)
        held = [soak.rest()]
        for _ in range(MEASURED):
            soak.live((1 - WARM_UP) / MEASURED * seconds)
            held.append(soak.rest())
        deadline = time.monotonic() + SETTLING
        while grown(held[0], held[-1]) and time.monotonic() < deadline:  # a busy machine takes longer to rest
            time.sleep(0.2)
            held[-1] = soak.holdings()
        print(f"{sum(soak.counts.values())} actions in {seconds:.0f} s:",
              ", ".join(f"{count} {name}" for name, count in sorted(soak.counts.items())))
        more = grown(held[0], held[-1])
        for what in held[0]:
            print(f"{what:22}", *(f"{holdings[what]:8}" for holdings in held), "  GROWN" if what in more else "")
        if "descriptors" in more:
            print(*sorted(os.readlink(link) for link in Path(f"/proc/{soak.sonvel.pid}/fd").iterdir()), sep="\n")
        soak.sonvel.terminate()
        assert soak.sonvel.wait(20) == 0
    return more


if __name__ == "__main__":
    sys.exit(bool(main(float(sys.argv[1]), *map(int, sys.argv[2:]))))
