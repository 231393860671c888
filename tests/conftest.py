import pytest

from support.session import Session


@pytest.fixture
def session():
    """A private sound session."""
    with Session() as session:
        yield session


@pytest.fixture
def bus():
    """A private session with a bus but without sound."""
    with Session(daemons=()) as session:
        yield session
