"""A program updates itself from version to version, and returns from versions that do not work."""
import functools
import http.server
import json
import platform
import ssl
import subprocess
import threading
from datetime import datetime, timedelta, timezone

from support.bus import BIN, call, connect
from support.waiting import wait_until

NAME, PATH = "com.quellmarsh.sonvel", "/com/quellmarsh/sonvel"
ARCHITECTURE = {"aarch64": "arm64"}.get(platform.machine(), platform.machine())
FEED = """<rss><channel><sonvel:product>com.quellmarsh.sonvel</sonvel:product>
<sonvel:counter>{counter}</sonvel:counter><sonvel:expires>{expires}</sonvel:expires>
<item><sparkle:version>{version}</sparkle:version><sparkle:channel>beta</sparkle:channel>
<sonvel:architecture>{architecture}</sonvel:architecture><enclosure url="{address}" {described}/></item></channel></rss>
"""


def sign(*arguments):
    """The output of the maker's tool."""
    return subprocess.run([BIN / "sign-feed", *arguments], check=True, capture_output=True, text=True).stdout.strip()


def program(version):
    """A program file of realistic size; data appended to an executable is ignored."""
    return (BIN / "updating-program").read_bytes() + b"x" * 4_000_000 + f"\n{version}".encode()


class Maker:
    """Publishes updates: two keys and a server."""

    def __init__(self, folder):
        self.folder, self.feed = folder, folder / "web/appcast.xml"
        self.feed.parent.mkdir()
        subprocess.run("openssl req -x509 -newkey ec -pkeyopt ec_paramgen_curve:prime256v1 -nodes -days 2 -subj /CN=localhost "
                       "-addext subjectAltName=DNS:localhost -keyout server.key -out trusted.pem".split(),
                       cwd=folder, check=True, capture_output=True)
        server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), functools.partial(
            http.server.SimpleHTTPRequestHandler, directory=str(self.feed.parent)))
        security = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
        security.load_cert_chain(folder / "trusted.pem", folder / "server.key")
        server.socket = security.wrap_socket(server.socket, server_side=True)
        threading.Thread(target=server.serve_forever, daemon=True).start()
        self.address = f"https://localhost:{server.server_port}/"
        (folder / "information.json").write_text(json.dumps({
            "SUFeedURL": self.address + "appcast.xml", "SUPublicEDKey": sign("new-key", folder / "first.key"),
            "AppUpdateAdditionalPublicEDKey": sign("new-key", folder / "second.key"), "AppUpdateChannel": "beta",
            "AppUpdateReplacesProgramFile": True}))

    def publish(self, version, counter, key, expires="2100-01-01T00:00:00Z"):
        file = self.feed.parent / version
        file.write_bytes(program(version))
        self.feed.write_text(FEED.format(version=version, counter=counter, expires=expires, architecture=ARCHITECTURE,
                                         address=self.address + version, described=sign("describe", file)))
        sign("sign", self.feed, self.folder / key)


def test_goes_from_version_to_version_and_back_from_those_that_do_not_work(bus, tmp_path):
    maker = Maker(tmp_path)
    installed, log = tmp_path / "bin/program", tmp_path / "log"
    installed.parent.mkdir()
    installed.write_bytes(program("1.0"))
    installed.chmod(0o755)

    def run_until(last):
        """Runs the program until the log ends with `last`; then ends the running version."""
        log.write_text("")
        first = bus.start(installed, environment={"SONVEL_TEST_FOLDER": str(tmp_path), "QT_QPA_PLATFORM": "offscreen",
                                                  "QT_QUICK_BACKEND": "software"})
        wait_until(lambda: last in log.read_text(), what=last)
        if "is installed" in log.read_text():
            assert first.wait(20) == 0
        call(connect(bus.environment), NAME, PATH, NAME, "Quit")
        assert first.wait(20) == 0
        wait_until(lambda: log.read_text().endswith("ends\n"), what="its end")

    def expect_program(version):
        assert installed.read_bytes() == program(version)
        assert list(installed.parent.iterdir()) == [installed]

    maker.publish("1.1", 1, "first.key")
    run_until("1.1: Sonvel is up to date")
    assert "1.0: Sonvel 1.1 is available" in log.read_text() and "1.0: Sonvel 1.1 is ready" in log.read_text()
    expect_program("1.1")

    replayed = maker.feed.read_bytes()
    maker.publish("1.2-dies", 2, "second.key")  # signed with the other key
    run_until("1.1: Sonvel couldn't be updated | The new version ended within a minute")
    expect_program("1.1")
    maker.publish("1.3-hangs", 3, "second.key")
    run_until("1.1: Sonvel couldn't be updated | The new version didn't become ready")
    expect_program("1.1")

    maker.feed.write_bytes(replayed)
    run_until("The update server offers something older than it did before")
    maker.publish("1.2", 4, "first.key")
    run_until("The update server offers something older than it did before")

    soon = datetime.now(timezone.utc) + timedelta(seconds=2)
    maker.publish("1.4", 5, "first.key", soon.strftime("%Y-%m-%dT%H:%M:%SZ"))
    wait_until(lambda: datetime.now(timezone.utc) > soon)
    run_until("The list of updates has expired")
    maker.publish("1.4", 6, "first.key")
    run_until("1.4: Sonvel is up to date")
    expect_program("1.4")
