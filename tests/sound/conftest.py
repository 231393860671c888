import json

import pytest

from support.lines import LineProcess
from support.machine import BINARIES
from support.waiting import wait_until


class TapHolder(LineProcess):
    """The engine in a separate process; requests as in tap_holder.cpp."""

    def __init__(self, machine, **options):
        super().__init__(machine, BINARIES / "tap-holder", **options)

    def tell(self, *words):
        answer = json.loads(self.ask(*words))[0]
        assert not (isinstance(answer, dict) and "error" in answer), f"{words}: {answer['error']}"
        return answer

    def app(self, pid):
        """The engine's record of a process, once it plays."""
        return wait_until(lambda: next((app for app in self.tell("apps") if app["pid"] == pid), None),
                          what=f"process {pid} among those that play")

    def add(self, pid, *arguments):
        self.app(pid)
        self.tell("add", pid, *arguments)


@pytest.fixture
def start_holder(machine):
    return lambda **options: TapHolder(machine, **options)


@pytest.fixture
def holder(machine):
    return TapHolder(machine)
