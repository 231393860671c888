import pytest

from support.session import Session


@pytest.fixture
def session():
    """A private sound session."""
    with Session() as session:
        yield session


@pytest.fixture
def bus():
    """A session without sound: a bus with nothing on it."""
    with Session(daemons=()) as session:
        yield session
