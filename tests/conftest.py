import pytest

from support.session import Session


@pytest.fixture
def session(request):
    """A private sound session; its options come from the test's mark, as @pytest.mark.session(quantum=256)."""
    mark = request.node.get_closest_marker("session")
    with Session(**(mark.kwargs if mark else {})) as session:
        yield session


@pytest.fixture
def bus():
    """A session without sound: a bus with nothing on it."""
    with Session(daemons=()) as session:
        yield session
