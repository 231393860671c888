import time


def wait_until(condition, within=20, what="what was waited for"):
    """Waits for a true value of condition() and returns it; fails the test after `within` seconds."""
    deadline = time.monotonic() + within
    while not (value := condition()):
        assert time.monotonic() < deadline, f"{what}: not within {within} s"
        time.sleep(0.005)
    return value
