"""The current objects and default metadata of a PipeWire server."""

import json
import subprocess
import threading


class Graph:
    def __init__(self, machine, mixer):
        self._objects = {}
        self._mixer = mixer
        dump = machine.start("stdbuf", "-oL", "pw-dump", "--monitor", "--no-colors", name="pw-dump",
                             stdout=subprocess.PIPE, text=True, errors="replace")
        threading.Thread(target=self._read_objects, args=[dump.stdout], daemon=True).start()

    def _read_objects(self, output):
        lines = []
        for line in output:
            lines.append(line)
            if line.startswith("]"):  # the end of an array of changed objects
                for changed in json.loads("".join(lines)):
                    self._update(changed)
                lines.clear()

    def _update(self, changed):
        objects = dict(self._objects)  # readers on other threads keep the old one
        if changed.get("info", 0) is None:
            objects.pop(changed["id"], None)
        else:
            objects[changed["id"]] = changed
        self._objects = objects

    def objects(self, kind, **properties):
        """The properties, with the id, of each object of a kind (Node, Port, Client ...) that has the given
        properties; nodes also with their state."""
        found = []
        for number, value in self._objects.items():
            if value["type"] == f"PipeWire:Interface:{kind}":
                info = value.get("info") or value
                found.append({**(info.get("props") or {}), "id": number, "state": info.get("state")})
        return [one for one in found if properties.items() <= one.items()]

    def node(self, name):
        return next(iter(self.objects("Node", **{"node.name": name})), None)

    def entries(self, anew=False):
        """The default metadata: a dictionary of texts by subject and key. anew: also what the server has reported to
        other programs alone; itself keeps changes from other programs."""
        records = [record.split("\x1f") for record in self._mixer.ask("reread" if anew else "entries").split("\x1e")[:-1]]
        return {(int(subject), key): value for subject, key, value in records}

    def metadata(self, subject, key, anew=False):
        return self.entries(anew).get((subject, key))

    def set_metadata(self, subject, key, value, kind="Spa:Id"):
        """Takes effect later: wait for its effect. None removes the entry."""
        self._mixer.ask(*(["remove", subject, key] if value is None else ["set", subject, key, kind, value]))

    def of_ours(self):
        """Nodes and metadata made by Sonvel."""
        nodes = [node["node.name"] for node in self.objects("Node") if str(node.get("node.name")).startswith("sonvel")]
        return nodes + [(place, value) for place, value in self.entries().items()
                        if place[1].startswith("sonvel") or value.startswith("sonvel")]
