"""Programs that are worked by lines: one there, one back."""

import json
import select
import subprocess


class LineProcess:
    def __init__(self, session, program, *arguments, **options):
        self.process = session.start(program, *arguments, stdin=subprocess.PIPE, stdout=subprocess.PIPE, **options)
        self.pid = self.process.pid

    def ask(self, *words):
        self.process.stdin.write((" ".join(map(str, words)) + "\n").encode())
        self.process.stdin.flush()
        assert select.select([self.process.stdout], [], [], 20)[0], f"no answer to {words}"
        return self.process.stdout.readline().decode().rstrip("\n")

    def kill(self):
        self.process.kill()
        self.process.wait()

    def finish(self):
        """Ends its input; its exit code."""
        self.process.stdin.close()
        return self.process.wait(20)


class TonePlayer(LineProcess):
    """Options of streams are those of tone_player.cpp, and properties of the stream."""

    def __init__(self, session, program, client):
        super().__init__(session, program, json.dumps(client))

    def open(self, stream, **options):
        """The ID of the stream's node."""
        options = {key.replace("__", "."): value for key, value in options.items()}
        return self.tell("open", stream, json.dumps(options))

    def tell(self, *words):
        answer = self.ask(*words).split(" ", 1)
        assert answer[0] == "ok", answer
        return int(answer[1])
