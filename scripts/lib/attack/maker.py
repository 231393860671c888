"""The publisher of updates, with a key and a server on the loopback interface."""
import base64
import ctypes
import ctypes.util
import hashlib
import http.server
import platform
import threading

SODIUM = ctypes.CDLL(ctypes.util.find_library("sodium"))
ARCHITECTURE = {"aarch64": "arm64"}.get(platform.machine(), platform.machine())


class Maker:
    """Signs the whole feed, as current programs require, and each file, as earlier ones did: a good feed is
    accepted by both."""

    def __init__(self):
        self.files, self._secret, public = {}, ctypes.create_string_buffer(64), ctypes.create_string_buffer(32)
        SODIUM.crypto_sign_keypair(public, self._secret)
        self.public_key = base64.b64encode(public.raw).decode()
        maker = self

        class Handler(http.server.BaseHTTPRequestHandler):
            def do_GET(self):
                content = maker.files.get(self.path)
                self.send_response(404 if content is None else 200)
                self.send_header("Content-Length", str(len(content or b"")))
                self.end_headers()
                self.wfile.write(content or b"")

            def log_message(self, *_):
                pass

        server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), Handler)
        threading.Thread(target=server.serve_forever, daemon=True).start()
        self.address = f"http://localhost:{server.server_port}"

    def _signature(self, content):
        signature = ctypes.create_string_buffer(64)
        SODIUM.crypto_sign_detached(signature, None, content, ctypes.c_ulonglong(len(content)), self._secret)
        return base64.b64encode(signature.raw).decode()

    def item(self, version, content, shown="", suffix="", is_faulty=False):
        """An item of a feed, with its file."""
        self.files[f"/{version}{suffix}"] = content
        checks = (f'sparkle:edSignature="{self._signature(content)}" '
                  f'sonvel:sha256="{hashlib.sha256(content).hexdigest()}"') if not is_faulty else ""
        return (f"<item><sparkle:version>{version}</sparkle:version>"
                f"<sparkle:shortVersionString>{shown or version}</sparkle:shortVersionString>"
                f"<sonvel:architecture>{ARCHITECTURE}</sonvel:architecture>"
                f'<enclosure url="{self.address}/{version}{suffix}" length="{len(content)}" {checks}/></item>')

    def feed(self, *items, counter=1, expires="2100-01-01T00:00:00Z"):
        text = ("<rss><channel><sonvel:product>com.quellmarsh.sonvel</sonvel:product>"
                f"<sonvel:counter>{counter}</sonvel:counter><sonvel:expires>{expires}</sonvel:expires>{''.join(items)}"
                "</channel></rss>\n").encode()
        return text + f"<!-- sonvel-signature: {self._signature(text)} -->\n".encode()

    def publish(self, feed):
        self.files["/appcast.xml"] = feed
