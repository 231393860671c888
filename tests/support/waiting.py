import socket
import time


def wait_until(condition, within=20, what="what was waited for"):
    """Waits for a true value of condition() and returns it; fails the test after `within` seconds."""
    deadline = time.monotonic() + within
    while not (value := condition()):
        assert time.monotonic() < deadline, f"{what}: not within {within} s"
        time.sleep(0.005)
    return value


def wait_until_served(path, what):
    """A socket is there some time before its daemon listens to it; a program that comes between is refused."""
    def is_served():
        with socket.socket(socket.AF_UNIX) as client:
            return client.connect_ex(str(path)) == 0
    wait_until(is_served, what=what)
