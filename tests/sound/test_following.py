"""Applications under control while devices, routes and processes come and go: within a second each is heard
where its user expects it, at the set volume."""

from support.waiting import wait_until

AT_ONCE = 1.4  # seconds: one, plus the time to measure a tone


def silent_at(machine, *sinks):
    for name in sinks:
        machine.sink(name).wait_for_zeros()


def test_default_device_is_followed_and_a_route_falls_back_and_returns(machine, holder):
    following, routed = machine.player(1000, 0.4), machine.player(1700, 0.4)
    holder.add(following.pid, 0.5)
    holder.add(routed.pid, 0.25, "Headphones")
    speakers, headphones = machine.sink("Speakers"), machine.sink("Headphones")
    speakers.wait_for_tone(1000, 0.2)
    headphones.wait_for_tone(1700, 0.1)
    machine.set_default_sink("Headphones")
    headphones.wait_for_tone(1000, 0.2, within=AT_ONCE)
    machine.remove_sink("Headphones")
    speakers.wait_for_tone(1000, 0.2, within=AT_ONCE)
    speakers.wait_for_tone(1700, 0.1, within=AT_ONCE)
    machine.add_sink("Headphones")
    machine.sink("Headphones").wait_for_tone(1700, 0.1, within=AT_ONCE)


def test_moves_made_elsewhere_become_the_route_and_follow_is_one_of_them(machine, holder):
    player = machine.player(1000, 0.4)
    machine.move(player.node, "Headphones")
    machine.sink("Headphones").wait_for_tone(1000, 0.4)
    holder.add(player.pid, 0.5)
    machine.sink("Headphones").wait_for_tone(1000, 0.2)
    silent_at(machine, "Speakers")
    machine.move(player.node, "Speakers")
    machine.sink("Speakers").wait_for_tone(1000, 0.2, within=AT_ONCE)
    silent_at(machine, "Headphones")
    holder.tell("output", player.pid, "Headphones")  # our own writes are no choice
    machine.sink("Headphones").wait_for_tone(1000, 0.2, within=AT_ONCE)
    silent_at(machine, "Speakers")
    machine.graph.set_metadata(player.node, "target.object", "-1", "Spa:Id")
    machine.graph.set_metadata(player.node, "target.node", "-1", "Spa:Id")
    machine.sink("Speakers").wait_for_tone(1000, 0.2, within=AT_ONCE)


def test_move_elsewhere_that_the_server_does_not_report_is_obeyed_soon(machine, holder):
    player = machine.player(1000, 0.4)
    holder.add(player.pid, 0.5)
    machine.sink("Speakers").wait_for_tone(1000, 0.2)
    machine.stop("wireplumber")
    machine.move(player.node, "Headphones")
    machine.start("pw-metadata", name="reader")  # until it is answered, the server reports changes to it alone
    wait_until(lambda: machine.graph.objects("Client", **{"application.name": "pw-metadata"}), what="its client")
    machine.resume("wireplumber")
    machine.sink("Headphones").wait_for_tone(1000, 0.2, within=2 * AT_ONCE)


def test_follow_chosen_here_holds_at_the_next_start_though_another_device_is_remembered(machine, holder):
    player = machine.player(1000, 0.4, program="tape", **{"media.role": "Music"})
    machine.move(player.node, "Headphones")
    machine.sink("Headphones").wait_for_tone(1000, 0.4)
    holder.add(player.pid, 1)
    holder.tell("output", player.pid)
    for again in (True, False):
        machine.sink("Speakers").wait_for_tone(1000, 0.4, within=AT_ONCE)
        silent_at(machine, "Headphones")
        player.kill()
        silent_at(machine, "Speakers")
        if again:
            player = machine.player(1000, 0.4, program="tape", **{"media.role": "Music"})


def test_all_processes_of_an_application_are_under_its_volume(machine, holder):
    first = machine.player(1000, 0.4, program="browser")
    second = machine.player(1700, 0.4, program="browser")
    machine.sink().wait_for_tone(1700, 0.4)
    holder.add(first.pid, 0.5)
    for frequency in (1000, 1700):
        machine.sink().wait_for_tone(frequency, 0.2)
    machine.player(2600, 0.4, program="browser")
    machine.sink().wait_for_tone(2600, 0.2)
    first.kill()
    holder.tell("gain", second.pid, 0.25)
    for frequency in (1700, 2600):
        machine.sink().wait_for_tone(frequency, 0.1)
