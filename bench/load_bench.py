"""load_bench.py [PLAYERS]...: the processor time of sound server and Sonvel for this many players, above that
without Sonvel, compared with one pw-loopback for each player."""
import sys

from measuring import busy_percent, wait_for_rest
from support.bus import end
from support.desktop import Desktop
from support.machine import DAEMONS
from support.waiting import wait_until

MEASURED = 8  # seconds
PATIENCE = 120  # seconds


class LoadBench:
    def __init__(self, desktop, count):
        self.desktop, self.machine, self.count = desktop, desktop.machine, count
        self.players = [self.machine.player(200 + 10 * number, 0.4 / count, program=f"player-{number}")
                        for number in range(count)]

    def nodes(self, prefix):
        return [node for node in self.machine.graph.objects("Node") if str(node.get("node.name")).startswith(prefix)]

    def is_linked_to(self, nodes):
        """Whether every player plays only into these nodes."""
        into = {node["id"] for node in nodes}
        links = self.machine.graph.objects("Link")
        fed = {player.node: {link["link.input.node"] for link in links if link["link.output.node"] == player.node}
               for player in self.players}
        return all(receivers and receivers <= into for receivers in fed.values())

    def measure(self, *others):
        """Percent of a processor, for the daemons and for the other processes."""
        wait_for_rest(self.machine, PATIENCE)
        daemons = [self.machine.processes[name] for name in DAEMONS]
        busy = busy_percent([*daemons, *others], MEASURED)
        return sum(busy), sum(busy[len(daemons):])

    def under_control(self):
        """With the panel open, and after closing it."""
        sonvel = self.desktop.start()
        icon = self.desktop.tray.icon()
        icon.click()
        wait_until(lambda: self.is_linked_to(self.nodes("sonvel-tap")), PATIENCE, "every player under control")
        opened = self.measure(sonvel)
        icon.click()
        closed = self.measure(sonvel)
        end(sonvel)
        wait_until(lambda: self.is_linked_to([self.machine.graph.node("Speakers")]), PATIENCE, "players on their own")
        return opened, closed

    def through_loopbacks(self):
        loops = [self.machine.start("pw-loopback",
                                    f"--capture-props=media.class=Audio/Sink node.name=loopback-{number} "
                                    "audio.position=[FL,FR] priority.session=1",
                                    "--playback-props=target.object=Speakers audio.position=[FL,FR]")
                 for number in range(self.count)]
        wait_until(lambda: len(self.nodes("loopback-")) == self.count, PATIENCE, "the loopbacks")
        for number, player in enumerate(self.players):
            serial = self.machine.graph.node(f"loopback-{number}")["object.serial"]
            self.machine.graph.set_metadata(player.node, "target.object", serial)
        wait_until(lambda: self.is_linked_to(self.nodes("loopback-")), PATIENCE, "every player in its loopback")
        return self.measure(*loops)

    def run(self):
        wait_until(lambda: self.is_linked_to([self.machine.graph.node("Speakers")]), PATIENCE, "players that play")
        before, _ = self.measure()
        (opened, own_opened), (closed, own_closed) = self.under_control()
        after, _ = self.measure()
        loopbacks, own_loopbacks = self.through_loopbacks()
        alone = (before + after) / 2
        print(f"{self.count:7}  left alone {alone:5.1f} ({before:.1f} before, {after:.1f} after)")
        for what, busy, own in (("Sonvel, panel closed", closed, own_closed), ("Sonvel, panel open", opened, own_opened),
                                ("one pw-loopback each", loopbacks, own_loopbacks)):
            print(f"{'':9}{what:22} {busy:5.1f}  extra {busy - alone:5.1f}  of that not in the daemons {own:5.1f}  "
                  f"beside the loopbacks {(busy - alone) / (loopbacks - alone):5.2f}", flush=True)


if __name__ == "__main__":
    print("Percent of one processor, at a quantum of 1,024 frames\nPlayers")
    for players in map(int, sys.argv[1:] or (10, 50)):
        with Desktop(is_read=False) as made:
            LoadBench(made, players).run()
