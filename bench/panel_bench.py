"""Compares the cost of the panel with pavucontrol, with the same ten players in one run: memory, processor
time, wake-ups and the time from the click to the first frame. Prints figures without judging them."""
import random
import re
import time
from pathlib import Path
from statistics import median

from support.bus import end
from support.desktop import Desktop
from support.waiting import wait_until

PLAYERS, OPENINGS = 10, 20
SETTLING, MEASURED, SYLLABLE = 2, 10, 0.1  # seconds
OTHER = "pavucontrol"
MEMORY = {"Rss": "resident", "Pss": "proportional", "Private_(?:Clean|Dirty)": "private"}


def memory(process):
    """Memory in MiB by kind."""
    text = Path(f"/proc/{process.pid}/smaps_rollup").read_text()
    return {words: sum(map(int, re.findall(rf"^{kind}: +(\d+)", text, re.M))) / 1024
            for kind, words in MEMORY.items()}


def busy_seconds(process):
    """Its exact processor time: /proc/PID/stat counts only hundredths of a second."""
    return time.clock_gettime(~process.pid << 3 | 2)  # as clock_getcpuclockid() does


def wake_ups(process):
    """The wake-ups of each of its threads."""
    found = {}
    for thread in Path(f"/proc/{process.pid}/task").iterdir():
        status = (thread / "status").read_text()
        name = "main" if thread.name == str(process.pid) else (thread / "comm").read_text().strip()
        found[name] = found.get(name, 0) + int(re.search(r"^voluntary_ctxt_switches:\s+(\d+)", status, re.M)[1])
    return found


class PanelBench:
    def __init__(self, desktop):
        self.desktop, self.random = desktop, random.Random(1)  # the same seed in every run
        self.players = [desktop.session.player(300 * number, 0.05, program=f"player-{number}")
                        for number in range(1, PLAYERS + 1)]
        self.sonvel = desktop.start()
        self.icon = desktop.tray.icon()

    def play(self, seconds):
        """Plays with the loudness changes of speech, so that the meters move."""
        deadline = time.monotonic() + seconds
        while (left := deadline - time.monotonic()) > 0:
            for player in self.players:
                player.tell("amplitude", "tone", 10 ** (self.random.uniform(-50, -20) / 20))
            time.sleep(min(left, SYLLABLE))

    def measure(self, *processes):
        """Memory of the first process, and the processor time of each in percent."""
        self.play(SETTLING)
        held, before, start = memory(processes[0]), [busy_seconds(one) for one in processes], time.monotonic()
        self.play(MEASURED)
        seconds = time.monotonic() - start
        return held, [100 * (busy_seconds(one) - then) / seconds for one, then in zip(processes, before)]

    def measure_closed(self, what):
        before = wake_ups(self.sonvel)
        held, (busy,) = self.measure(self.sonvel)
        woken = {name: (count - before.get(name, 0)) / (SETTLING + MEASURED)
                 for name, count in wake_ups(self.sonvel).items()}
        print(f"Sonvel, {what}: {', '.join(f'{words} {size:.1f} MiB' for words, size in held.items())}, "
              f"processor time {busy:.2f} %, wake-ups per second: "
              f"{', '.join(f'{name} {count:.1f}' for name, count in woken.items() if count)}")
        return held

    def open(self):
        """Milliseconds from the click to the first frame."""
        start = time.monotonic()
        self.icon.click()
        wait_until(self.desktop.display.is_painted, what="the panel")
        return 1000 * (time.monotonic() - start)

    def close(self):
        self.icon.click()
        wait_until(self.desktop.display.is_black, what="an empty screen")

    def meters_of_other(self):
        return len(self.desktop.session.graph.objects("Node", **{"media.class": "Stream/Input/Audio"}))

    def taps(self):
        return sum(str(node.get("node.name")).startswith("sonvel-tap")
                   for node in self.desktop.session.graph.objects("Node"))

    def run(self):
        print(f"{PLAYERS} players play")
        self.measure_closed("not yet opened")

        # Under Sonvel's control the other mixer shows no meters for the players.
        other = self.desktop.start(OTHER)
        wait_until(self.desktop.display.is_painted, what=OTHER)
        others, (other_busy, server_busy) = self.measure(other, self.desktop.session.processes["pipewire-pulse"])
        meters = self.meters_of_other()
        end(other)
        wait_until(self.desktop.display.is_black, what="an empty screen")

        first = self.open()
        wait_until(lambda: self.taps() == PLAYERS, what="every player under control")
        ours, (busy,) = self.measure(self.sonvel)
        self.close()
        closed = self.measure_closed("closed, every player under control")
        times = []
        for _ in range(OPENINGS):
            times.append(self.open())
            self.close()

        print(f"From the click to the first frame: {first:.0f} ms the first time; {OPENINGS} times more: median "
              f"{median(times):.0f} ms, at most {max(times):.0f} ms\n")
        print(f"{'':30} {'Sonvel':>8} {OTHER:>12} {'ratio':>6}")
        for words in MEMORY.values():
            self.compare(f"{words} memory, open, MiB", ours[words], others[words])
            self.compare(f"{words} memory, closed, MiB", closed[words], others[words])
        self.compare("processor time, %", busy, other_busy)
        self.compare("  with its sound server, %", busy, other_busy + server_busy)
        print(f"{OTHER} had {meters} meters; pipewire-pulse took {server_busy:.2f} % for it")

    @staticmethod
    def compare(what, ours, others):
        print(f"{what:30} {ours:8.2f} {others:12.2f} {ours / others:6.2f}")


if __name__ == "__main__":
    with Desktop(is_read=False) as desktop:  # a screen reader slows down every program
        PanelBench(desktop).run()
