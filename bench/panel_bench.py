"""Compares the cost of the panel with pavucontrol, with the same ten players in one run: memory, processor
time, wake-ups and the time from the click to the first frame. Prints figures without judging them."""
import random
import time
from statistics import median

from measuring import MEMORY, busy_percent, memory, wake_ups_per_second
from support.bus import end
from support.desktop import Desktop
from support.waiting import wait_until

PLAYERS, OPENINGS, STARTS = 10, 20, 5
SETTLING, MEASURED, SYLLABLE = 2, 10, 0.1  # seconds
OTHER = "pavucontrol"


class PanelBench:
    def __init__(self, desktop):
        self.desktop, self.random = desktop, random.Random(1)  # the same seed in every run
        self.start_times()
        self.players = [desktop.machine.player(300 * number, 0.05, program=f"player-{number}")
                        for number in range(1, PLAYERS + 1)]
        self.sonvel = desktop.start()
        self.icon = desktop.tray.icon()

    def start_times(self):
        """Milliseconds from the start of each program to its first visible result."""
        def start(program, is_there):
            begun = time.monotonic()
            process = self.start_other() if program == OTHER else self.desktop.start()
            wait_until(is_there, what="what is seen of it")
            times = 1000 * (time.monotonic() - begun)
            end(process)
            wait_until(lambda: not is_there(), what="its end")
            return times

        icon = median(start("sonvel", self.desktop.tray.icons) for _ in range(STARTS))
        window = median(start(OTHER, self.desktop.display.is_painted) for _ in range(STARTS))
        print(f"From the start, median of {STARTS}: Sonvel's tray icon {icon:.0f} ms, {OTHER}'s first frame "
              f"{window:.0f} ms, ratio {icon / window:.2f}")

    def start_other(self):
        return self.desktop.machine.start(OTHER, environment=self.desktop.environment)

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
        return memory(processes[0]), busy_percent(processes, MEASURED, self.play)

    def measure_closed(self, what):
        held, (busy,) = self.measure(self.sonvel)
        woken = wake_ups_per_second(self.sonvel, MEASURED, self.play)
        print(f"Sonvel, {what}: {', '.join(f'{words} {size:.1f} MiB' for words, size in held.items())}, "
              f"processor time {busy:.2f} %, wake-ups per second: "
              f"{', '.join(f'{name} {count}' for name, count in woken.items()) or 'none'}")
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
        return len(self.desktop.machine.graph.objects("Node", **{"media.class": "Stream/Input/Audio"}))

    def taps(self):
        return sum(str(node.get("node.name")).startswith("sonvel-tap")
                   for node in self.desktop.machine.graph.objects("Node"))

    def end_players(self):
        self.open()
        for player in self.players:
            player.finish()
        self.players = []
        wait_until(lambda: self.taps() == 0, what="the end of the taps")
        self.close()

    def run(self):
        print(f"{PLAYERS} players play")
        before = self.measure_closed("not yet opened")

        # Under Sonvel's control the other mixer shows no meters for the players.
        other = self.start_other()
        wait_until(self.desktop.display.is_painted, what=OTHER)
        others, (other_busy, server_busy) = self.measure(other, self.desktop.machine.processes["pipewire-pulse"])
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
        self.end_players()
        left = self.measure_closed("closed, the players have ended")

        print(f"Private memory over what it was before the first opening: {closed['private'] - before['private']:.1f} MiB "
              f"with every player under control, {left['private'] - before['private']:.1f} MiB with none")
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
