import time


def wait_until(condition, within=20, what="what was waited for"):
    """The first true value of condition(); fails the test when there is none in so many seconds."""
    deadline = time.monotonic() + within
    while not (value := condition()):
        assert time.monotonic() < deadline, f"{what}: not within {within} s"
        time.sleep(0.005)
    return value
