"""The time from a change of volume to its sound at the sink, and the delay that a tap adds, at several
quantums.

The sink's monitor, which is recorded, lags one quantum behind the device, with or without Sonvel."""
import time
from statistics import median

import dbus
import numpy
from support.bus import call, connect, end
from support.desktop import Desktop
from support.waiting import wait_until

MIXER = "com.quellmarsh.sonvel", "/com/quellmarsh/sonvel/Mixer"
QUANTUMS, MOVES, LOW = (1024, 256, 64), 30, 40  # frames, a count, percent
RATE, PERIOD = 48000, 4800  # Hz; frames from one impulse to the next


def worked(bus, method, *arguments, signature=None):
    call(bus, *MIXER, "com.quellmarsh.sonvel.Mixer1", method, *arguments, signature=signature)


def keys(bus):
    return [str(entry["key"]) for entry in
            call(bus, *MIXER, "org.freedesktop.DBus.Properties", "Get", "com.quellmarsh.sonvel.Mixer1", "Applications")]


def impulse_phase(sink):
    """The position of the impulses within the period of the graph's clock."""
    mark = sink.mark()
    sink.wait_for_frames(4 * PERIOD)
    heard = sink.since(mark)
    phases = {(heard.position + place) % PERIOD for place in numpy.flatnonzero(heard.left > 0.1)}
    return phases.pop() if len(phases) == 1 and heard.complete else None


def delay_of_change(bus, sink, name, percent, quantum):
    """Frames from the call to the first sample at the new volume; None if cycles were lost."""
    sink.wait_for_frames(4 * quantum)
    mark = sink.mark()
    worked(bus, "SetVolume", name, dbus.Int32(percent))
    called = sink.mark()
    sink.wait_for_frames(6 * quantum + 1024)
    heard = sink.since(mark)
    # The counter grows by much less between samples, and drops to zero where it restarts.
    ratios = heard.left[1:] / numpy.maximum(heard.left[:-1], 1e-3)
    changes = numpy.flatnonzero((abs(ratios - LOW / 100) < 0.1) | (abs(ratios - 100 / LOW) < 0.2))
    return (changes[0] + 1, called - mark) if heard.complete and len(changes) == 1 else None


def bench(quantum):
    with Desktop(is_read=False, quantum=quantum) as desktop:
        machine = desktop.machine
        impulses = machine.player(signal="impulses", amplitude=0.8, program="impulses")
        sink = machine.sink()
        direct = impulse_phase(sink)
        sonvel = desktop.start()
        icon, bus = desktop.tray.icon(), connect(desktop.environment)
        icon.click()
        wait_until(lambda: "impulses" in keys(bus), what="the row")
        wait_until(lambda: any(str(node.get("node.name")).startswith("sonvel-tap")
                               for node in machine.graph.objects("Node")), what="the tap")
        time.sleep(1)
        tapped = impulse_phase(sink)
        impulses.finish()
        machine.player(signal="counter", amplitude=0.5, program="counter")
        wait_until(lambda: "counter" in keys(bus), what="the second row")
        time.sleep(1)
        found = [delay_of_change(bus, sink, "counter", LOW if number % 2 == 0 else 100, quantum)
                 for number in range(MOVES)]
        end(sonvel)
    delays = [one[0] for one in found if one]
    in_call = [one[1] for one in found if one]
    added = None if direct is None or tapped is None else (tapped - direct) % PERIOD
    print(f"{quantum:7}  {len(delays):5} of {MOVES}  {1000 * median(delays) / RATE:9.1f}  {1000 * max(delays) / RATE:8.1f}  "
          f"{median(delays) / quantum:10.1f}  {max(delays) / quantum:6.1f}  {1000 * median(in_call) / RATE:10.1f}  "
          f"{'unknown' if added is None else added:>12}", flush=True)


if __name__ == "__main__":
    print("quantum  moves heard  median ms  at most  in quantums  at most  the call ms  delay of tap, samples")
    for frames in QUANTUMS:
        bench(frames)
