"""What a test has instead of the computer it runs on: folders, a bus and a sound server."""

import ctypes
import json
import os
import shutil
import signal
import subprocess
import tempfile
from pathlib import Path

from support.graph import Graph
from support.hearing import Sink, write_tone
from support.lines import LineProcess, TonePlayer
from support.waiting import wait_until, wait_until_served

BINARIES = Path(os.environ.get("SONVEL_BIN", Path(__file__).parents[2] / "build/release/bin"))
DAEMONS = ("pipewire", "wireplumber", "pipewire-pulse")
_SOCKETS = {"pipewire": "pipewire-0", "pipewire-pulse": "pulse/native"}
_libc = ctypes.CDLL(None)

# Without a folder of services, the bus starts nothing by itself.
_BUS = """<busconfig><type>session</type><listen>unix:path={}</listen><auth>EXTERNAL</auth>
<policy context="default"><allow send_destination="*" eavesdrop="true"/><allow eavesdrop="true"/><allow own="*"/></policy>
</busconfig>"""
_NO_HARDWARE = {
    "main.lua.d/51-test.lua":  # WirePlumber 0.4
        'alsa_monitor.enabled = false\nv4l2_monitor.enabled = false\nlibcamera_monitor.enabled = false\n'
        'default_access.properties["enable-flatpak-portal"] = false\n',
    "bluetooth.lua.d/51-test.lua": "bluez_monitor.enabled = false\n",
    "wireplumber.conf.d/51-test.conf":  # WirePlumber 0.5
        "wireplumber.profiles = { main = { hardware.audio = disabled, hardware.bluetooth = disabled,\n"
        "  hardware.video-capture = disabled, support.portal-permissionstore = disabled } }\n",
}


def sink_properties(name, priority):
    return {"factory.name": "support.null-audio-sink", "node.name": name, "node.description": name,
            "media.class": "Audio/Sink", "audio.position": "FL,FR", "audio.rate": "48000",
            "priority.session": str(priority), "object.linger": "true",
            # WirePlumber 0.4 crashes when an idle node goes before it is suspended.
            "session.suspend-timeout-seconds": "0"}


class Machine:
    """A private D-Bus, PipeWire, WirePlumber and PulseAudio socket in temporary folders, with the sinks
    Speakers (the default) and Headphones. Everything ends with this object or this process."""

    def __init__(self, quantum=1024, daemons=DAEMONS):
        """quantum: frames per cycle. daemons: none for a machine without sound."""
        self.folder = Path(tempfile.mkdtemp(prefix="sonvel-machine-"))
        self.processes = {}
        self.sinks = {}
        kept = ("PATH", "LANG", "ASAN_OPTIONS", "LSAN_OPTIONS", "TSAN_OPTIONS", "UBSAN_OPTIONS")
        self.environment = {name: os.environ[name] for name in kept if name in os.environ}
        self.environment |= {
            "HOME": f"{self.folder}/home", "XDG_RUNTIME_DIR": f"{self.folder}/run",
            "XDG_CONFIG_HOME": f"{self.folder}/config", "XDG_STATE_HOME": f"{self.folder}/state",
            "XDG_DATA_HOME": f"{self.folder}/data", "XDG_CACHE_HOME": f"{self.folder}/cache",
            "DBUS_SESSION_BUS_ADDRESS": f"unix:path={self.folder}/run/bus", "DISABLE_RTKIT": "y"}
        for name in ("home", "run", "config", "state", "data", "cache", "bin"):
            (self.folder / name).mkdir(mode=0o700)
        self._configure(quantum)
        try:
            self.start("dbus-daemon", f"--config-file={self.folder}/bus.conf", "--nofork", name="dbus-daemon")
            wait_until_served(self.folder / "run/bus", "D-Bus")
            for daemon in daemons:
                self._start_daemon(daemon)
        except BaseException:
            self.end()
            raise

    def _configure(self, quantum):
        self.write("bus.conf", _BUS.format(f"{self.folder}/run/bus"))
        for name, text in _NO_HARDWARE.items():
            self.write(f"config/wireplumber/{name}", text)
        clock = {f"default.clock.{name}": quantum for name in ("quantum", "min-quantum", "max-quantum")}
        sinks = [json.dumps(sink_properties(name, priority))
                 for name, priority in (("Speakers", 1500), ("Headphones", 1000))]
        self.write("config/pipewire/pipewire.conf.d/50-test.conf",
                   "context.properties = " + json.dumps({**clock, "vm.overrides": clock}) +
                   "\ncontext.objects = [ " + " ".join(f"{{ factory = adapter args = {sink} }}" for sink in sinks) + " ]")

    def restriction(self):
        """The environment for programs that the server restricts from their start, like sandboxed ones."""
        for name in ("client", "client-rt"):
            self.write(f"restricted/pipewire/{name}.conf.d/50-test.conf",
                       "context.properties = { pipewire.client.access = restricted }")
        return {"XDG_CONFIG_HOME": f"{self.folder}/restricted"}

    def write(self, name, text):
        """A file in the machine's folder."""
        path = self.folder / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(text, errors="surrogateescape")

    def end(self):
        for process in reversed(self.processes.values()):
            process.kill()
            process.wait()
        shutil.rmtree(self.folder, ignore_errors=True)

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.end()

    # Programs

    def start(self, program, *arguments, name=None, environment=None, **options):
        """Starts a program on the machine. name: of its log and its entry in self.processes."""
        name = name or f"{Path(program).name}-{len(self.processes)}"
        with open(self.folder / f"{name}.log", "ab") as log:
            options = {"stdin": subprocess.DEVNULL, "stdout": log, "stderr": log, "executable": program} | options
            process = subprocess.Popen([Path(program).name, *map(str, arguments)], env=self.environment | (environment or {}),
                                       # ends with this process
                                       preexec_fn=lambda: _libc.prctl(1, signal.SIGKILL),
                                       **options)
        self.processes[name] = process
        return process

    def run(self, *command):
        """The output of a program that ends by itself."""
        return subprocess.run(list(map(str, command)), env=self.environment, check=True, text=True, timeout=20,
                              stdout=subprocess.PIPE).stdout

    def copy_program(self, program, name):
        """A copy of a program, for a process with another name."""
        copy = self.folder / "bin" / name
        if not copy.exists():
            shutil.copy(shutil.which(program) or BINARIES / program, copy)
        return copy

    def player(self, frequency=1000, amplitude=0.4, program=None, client=None, **options):
        """A tone player with a stream "tone"; the attribute node has its node's ID. program: its name, shared
        by players of one application; by default each is its own application."""
        program = program or f"tone-player-{len(self.processes)}"
        player = TonePlayer(self, self.copy_program("tone-player", program), client or {})
        player.node = player.open("tone", frequency=frequency, amplitude=amplitude, **options)
        return player

    def play(self, program, frequency, amplitude, copy=None):
        """Plays a tone for two minutes with pw-play, paplay or ffplay; copy: the process's name."""
        file = self.folder / f"{frequency}-{amplitude}.wav"
        if not file.exists():
            write_tone(file, frequency, amplitude)
        options = ["-nodisp", "-autoexit", "-loglevel", "error"] if program == "ffplay" else []
        return self.start(program, *options, file, executable=self.copy_program(program, copy or program),
                          environment={"SDL_AUDIODRIVER": "pulseaudio", "SDL_VIDEODRIVER": "dummy"})

    # Daemons

    def kill(self, daemon):
        self.processes[daemon].kill()
        self.processes[daemon].wait()
        if daemon == "wireplumber" and self.processes["pipewire"].poll() is None:
            wait_until(lambda: not self.graph.entries(), what="the end of the metadata")

    def stop(self, daemon):
        """Stops the daemon until resume()."""
        self.processes[daemon].send_signal(signal.SIGSTOP)

    def resume(self, daemon):
        self.processes[daemon].send_signal(signal.SIGCONT)

    def restart(self, daemon):
        """Returns when it serves again. With PipeWire the other two are restarted, as on a desktop."""
        # WirePlumber can't set up a sink again while someone listens to it
        for sink in list(self.sinks.values()):
            sink.close()
        daemons = DAEMONS if daemon == "pipewire" else (daemon,)
        for name in reversed(daemons):
            self.kill(name)
        for name in daemons:
            self._start_daemon(name)

    def _start_daemon(self, daemon):
        socket = self.folder / "run" / _SOCKETS.get(daemon, "none")
        socket.unlink(missing_ok=True)
        self.start(daemon, name=daemon)
        if daemon in _SOCKETS:
            wait_until_served(socket, daemon)
        if daemon == "pipewire":
            self.graph = Graph(self, LineProcess(self, BINARIES / "mixer"))
        if daemon == "wireplumber":
            wait_until(self.default_sink, what="a default sink")

    # Sinks and streams

    def sink(self, name="Speakers"):
        """Listens to a sink; later calls share the listener."""
        if name not in self.sinks:
            self.sinks[name] = Sink(self, BINARIES / "listener", name)
        return self.sinks[name]

    def default_sink(self, anew=False):
        return json.loads(self.graph.metadata(0, "default.audio.sink", anew) or "{}").get("name")

    def set_default_sink(self, name):
        self.graph.set_metadata(0, "default.configured.audio.sink", json.dumps({"name": name}), "Spa:String:JSON")
        wait_until(lambda: self.default_sink() == name, what=f"{name} as the default")

    def add_sink(self, name):
        self.run("pw-cli", "create-node", "adapter", json.dumps(sink_properties(name, 500)))
        wait_until(lambda: (node := self.graph.node(name)) and
                   len(self.graph.objects("Port", **{"node.id": node["id"]})) == 4, what=f"the sink {name}")

    def remove_sink(self, name):
        if name in self.sinks:
            self.sinks[name].close()
        self.run("pw-cli", "destroy", self.graph.node(name)["id"])
        wait_until(lambda: not self.graph.node(name), what=f"the end of {name}")

    def move(self, stream, sink, keys=("target.node", "target.object")):
        """Sends a stream (its node's ID) to a sink, as mixers do. Waits until it is linked: before, the
        session manager does not know it and stores nothing."""
        wait_until(lambda: self.graph.objects("Link", **{"link.output.node": stream}), what="a stream that is linked")
        target = self.graph.node(sink)
        for key in keys:
            self.graph.set_metadata(stream, key, target["id" if key == "target.node" else "object.serial"])
