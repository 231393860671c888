"""Programs that are controlled by lines of text."""

import json
import os
import select
import subprocess


class LineProcess:
    def __init__(self, machine, program, *arguments, **options):
        self.process = machine.start(program, *arguments, stdin=subprocess.PIPE, stdout=subprocess.PIPE, bufsize=0,
                                     **options)
        self.pid = self.process.pid
        self._unread = b""

    def hear(self, seconds=20):
        """Its next line; None after the timeout, or if it has ended."""
        while b"\n" not in self._unread:
            if not select.select([self.process.stdout], [], [], seconds)[0]:
                return None
            said = os.read(self.process.stdout.fileno(), 65536)
            if not said:
                return None
            self._unread += said
        line, self._unread = self._unread.split(b"\n", 1)
        return line.decode()

    def ask(self, *words):
        """Sends a line and returns the answer line."""
        self.process.stdin.write((" ".join(map(str, words)) + "\n").encode(errors="surrogateescape"))
        answer = self.hear()
        assert answer is not None, f"no answer to {words}"
        return answer

    def kill(self):
        self.process.kill()
        self.finish()

    def finish(self):
        """Closes its input; returns its exit code."""
        self.process.stdin.close()
        code = self.process.wait(20)
        self.process.stdout.close()
        return code


class TonePlayer(LineProcess):
    """Options of streams are those of tone_player.cpp, and properties of the stream."""

    def __init__(self, machine, program, client):
        super().__init__(machine, program, json.dumps(client))

    def open(self, stream, **options):
        """The ID of the stream's node."""
        options = {key.replace("__", "."): value for key, value in options.items()}
        return self.tell("open", stream, json.dumps(options, ensure_ascii=False))

    def tell(self, *words):
        answer = self.ask(*words).split(" ", 1)
        assert answer[0] == "ok", answer
        return int(answer[1])
