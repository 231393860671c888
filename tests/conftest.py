import pytest

from support.bus import Conversation, PrivateBus
from support.session import Session


@pytest.fixture
def session(request):
    """A private sound session; its options come from the test's mark, as @pytest.mark.session(quantum=256)."""
    mark = request.node.get_closest_marker("session")
    with Session(**(mark.kwargs if mark else {})) as session:
        yield session


@pytest.fixture
def bus():
    """A session bus with nothing on it."""
    private = PrivateBus()
    yield private
    private.close()


@pytest.fixture
def talk(bus):
    """Starts a program on that bus (or with this environment) and talks with it in lines."""
    started = []

    def start(*command, environment=None):
        started.append(Conversation(*command, environment=bus.environment | (environment or {})))
        return started[-1]

    yield start
    for conversation in started:
        conversation.close()
