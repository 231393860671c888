"""How applications are named from facts about their processes."""

from pathlib import Path

import pytest
from support.lines import LineProcess
from support.machine import BINARIES

ENTRY = "[Desktop Entry]\nType=Application\nName={name}\nName[de]={name} auf Deutsch\nExec={program} %U\n"


def install_entry(machine, entry, name, program):
    folder = machine.folder / "data/applications"
    folder.mkdir()
    (folder / f"{entry}.desktop").write_text(ENTRY.format(name=name, program=program))


@pytest.mark.parametrize("kind, environment, name", [
    ("pw-play", {}, "Records"),
    ("pw-play", {"LC_ALL": "C.UTF-8", "LANGUAGE": "de"}, "Records auf Deutsch"),
    ("paplay", {}, "Records")])
def test_program_is_named_after_its_entry_in_the_users_language(machine, start_holder, kind, environment, name):
    install_entry(machine, "org.example.Records", "Records", machine.copy_program(kind, "records"))
    player = machine.play(kind, 1000, 0.2, copy="records")
    app = start_holder(environment=environment).app(player.pid)
    assert (app["bundleID"], app["parentBundleID"], app["name"]) == ("org.example.Records",) * 2 + (name,)


def test_child_of_a_script_is_named_after_the_entry_that_starts_it(machine, holder):
    script = machine.folder / "bin/browser"
    script.write_text(f"#!/bin/sh\n{BINARIES}/tone-player application.name=helper\ntrue\n")
    script.chmod(0o755)
    install_entry(machine, "org.example.Browser", "Browser", script)
    parent = LineProcess(machine, script)
    parent.ask("open tone {}")
    pid = int(Path(f"/proc/{parent.pid}/task/{parent.pid}/children").read_text())
    app = holder.app(pid)
    assert (app["bundleID"], app["name"]) == ("org.example.Browser", "Browser")


def test_program_without_entry_is_named_after_what_it_claims(machine, holder):
    tinker = machine.player(program="tinker", client={"application.name": "Tinker Box"})
    app = holder.app(tinker.pid)
    assert (app["bundleID"], app["name"]) == ("tinker", "Tinker Box")
    named = machine.player(client={"application.name": "Named", "application.id": "org.example.Named"})
    assert holder.app(named.pid)["bundleID"] == "org.example.Named"


def test_program_that_claims_to_be_part_of_the_sound_system_is_listed(machine, holder):
    player = machine.player(program="wireplumber", client={
        "application.name": "Rogue\n\u202e", "application.id": "com.quellmarsh.sonvel",
        "pipewire.access.portal.app_id": "com.quellmarsh.sonvel"})
    app = holder.app(player.pid)
    assert (app["bundleID"], app["name"]) == ("wireplumber", "Rogue")
