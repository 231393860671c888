"""Resource use of processes."""
import re
import time
from pathlib import Path

from support.waiting import wait_until

MEMORY = {"Rss": "resident", "Pss": "proportional", "Private_(?:Clean|Dirty)": "private"}


def memory(process):
    """Memory in MiB by kind."""
    text = Path(f"/proc/{process.pid}/smaps_rollup").read_text()
    return {words: sum(map(int, re.findall(rf"^{kind}: +(\d+)", text, re.M))) / 1024
            for kind, words in MEMORY.items()}


def busy_seconds(process):
    """Its exact processor time: /proc/PID/stat counts only hundredths of a second."""
    return time.clock_gettime(~process.pid << 3 | 2)  # as clock_getcpuclockid() does


def busy_percent(processes, seconds, wait=time.sleep):
    """Percent of one processor, for each process."""
    before, start = [busy_seconds(one) for one in processes], time.monotonic()
    wait(seconds)
    passed = time.monotonic() - start
    return [100 * (busy_seconds(one) - then) / passed for one, then in zip(processes, before)]


def wait_for_rest(machine, within):
    """Waits until the session manager has set up all that is new, which takes it longer than the making."""
    manager = machine.processes["wireplumber"]
    wait_until(lambda: busy_percent([manager], 1)[0] < 5, within, "a session manager at rest")


def wake_ups(process):
    """The wake-ups of each of its threads."""
    found = {}
    for thread in Path(f"/proc/{process.pid}/task").iterdir():
        status = (thread / "status").read_text()
        name = "main" if thread.name == str(process.pid) else (thread / "comm").read_text().strip()
        found[name] = found.get(name, 0) + int(re.search(r"^voluntary_ctxt_switches:\s+(\d+)", status, re.M)[1])
    return found


def wake_ups_per_second(process, seconds, wait=time.sleep):
    """By thread, without those that were never woken."""
    before = wake_ups(process)
    wait(seconds)
    return {name: round((count - before.get(name, 0)) / seconds, 1)
            for name, count in wake_ups(process).items() if count != before.get(name, 0)}
