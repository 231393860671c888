import pytest

from support.machine import Machine


@pytest.fixture
def machine():
    """With sound."""
    with Machine() as machine:
        yield machine


@pytest.fixture
def bus():
    """A machine with a bus but without sound."""
    with Machine(daemons=()) as machine:
        yield machine
