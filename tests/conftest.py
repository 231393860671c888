import pytest

from support.machine import Machine


@pytest.fixture
def machine(request):
    """With sound, and the options of the test's mark."""
    mark = request.node.get_closest_marker("machine")
    with Machine(**(mark.kwargs if mark else {})) as machine:
        yield machine


@pytest.fixture
def bus():
    """A machine with a bus but without sound."""
    with Machine(daemons=()) as machine:
        yield machine
