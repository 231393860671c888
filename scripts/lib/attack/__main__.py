import os
import re
import sys
import traceback

from attack import by_programs, on_updates
from attack.victim import Victim


LONGEST_SHOWN = 140


def shortened(text):
    """The text in one line."""
    shown = repr(text)[1:-1]
    return shown if len(shown) <= LONGEST_SHOWN else shown[:LONGEST_SHOWN] + "…"


def main():
    programs, *wanted = sys.argv[1:]
    pictures = os.environ.get("PICTURES")
    came_off = failed = 0
    for name, carry_out in (on_updates.ATTACKS | by_programs.ATTACKS).items():
        if wanted and not any(part in name for part in wanted):
            continue
        with Victim(programs) as victim:
            try:
                succeeded, seen = carry_out(victim)
                result = "came off" if succeeded else "refused"
                came_off += succeeded
            except Exception:  # an attack that could not be carried out proves nothing
                result, seen = "NOT TRIED", traceback.format_exc().strip().splitlines()[-1]
                failed += 1
            if pictures:
                victim.picture(f"{pictures}/{re.sub('[^a-zA-Z0-9]+', '-', name)}.png")
        print(f"| {name} | {result} | {shortened(seen)} |", flush=True)
    print(f"\n{came_off} came off, {failed} could not be tried")
    return 1 if came_off or failed else 0


sys.exit(main())
