"""Works the real program as its users do, by its icon and a screen reader, while three players play, and prints what
was asked beside what was heard at the sinks. As a script: panel_check.py [--scale FACTOR] [FOLDER for the pictures].
"""
import argparse
import sys
from pathlib import Path

from support.desktop import Desktop, example_players
from support.hearing import decibels
from support.waiting import wait_until


class PanelCheck:
    def __init__(self, desktop, pictures):
        self.desktop, self.screen, self.pictures = desktop, desktop.screen, Path(pictures)
        self.applications = example_players()
        self.rows = self.rows_off = 0

    def run(self):
        print(f"{'who':12} {'asked':44} {'wanted':14} heard")
        for step in (self.start, self.change_volumes, self.mute, self.route, self.take_pictures, self.restart,
                     self.close_and_open, self.reset, self.quit):
            step()
        print(f"{self.rows_off} of {self.rows} rows are off")
        return self.rows_off

    def row(self, who, asked, do, wanted="done", heard=lambda: "done"):
        """Prints a row for do(); the row fails if do() fails."""
        self.rows += 1
        try:
            do()
            verdict = "ok"
        except AssertionError as error:
            self.rows_off += 1
            verdict = f"OFF {error}"
        print(f"{who:12} {asked:44} {wanted:14} {heard():14} {verdict}", flush=True)

    def heard(self, application, asked):
        """A row for an application that must be heard at its sink and level."""
        sink = self.desktop.machine.sink(application.sink)
        wanted = f"{decibels(application.level):.3f} dB" if application.level else "below -100 dB"
        self.row(application.name, asked, lambda: self.desktop.hear(application), wanted,
                 lambda: f"{decibels(sink.amplitude(application.frequency)):.3f} dB")

    def not_heard(self, application, asked, name):
        """A row for an application that must not be heard at a sink."""
        sink = self.desktop.machine.sink(name)
        self.row(application.name, asked, lambda: sink.wait_for_tone(application.frequency, 0), "below -100 dB",
                 lambda: f"{decibels(sink.amplitude(application.frequency)):.3f} dB")

    def shows(self, who, asked, name):
        self.row(who, asked, lambda: self.screen.control(name))

    def shows_volume(self, application, asked):
        def compare():
            value = self.screen.control(application.volume).value
            assert value == 100 * application.gain, value

        self.row(application.name, asked, compare)

    def press(self, who, asked, name):
        self.row(who, asked, lambda: self.desktop.press(name))

    def start(self):
        for application in self.applications:
            self.desktop.play(application)
            self.heard(application, "starts")
        self.sonvel = self.desktop.start()
        self.row("Sonvel", "starts, its icon comes into the tray", self.desktop.tray.icon)
        self.desktop.tray.icon().click()
        for application in self.applications:
            self.shows_volume(application, "has a row at 100 percent")
            self.heard(application, "taken over")
        self.row("Sonvel", "no device in other mixers", self.assert_not_listed)

    def assert_not_listed(self):
        sinks = self.desktop.machine.run("pactl", "list", "short", "sinks")
        assert "Speakers" in sinks and "sonvel" not in sinks, sinks

    def change_volumes(self):
        for application in self.applications:
            for percent in (150, 25, 150 if application is self.applications[0] else 100):
                self.desktop.set_volume(application, percent)
                self.heard(application, f"volume to {percent}")
            for other in self.applications:
                if other is not application:
                    self.heard(other, f"  while {application.name} changes")

    def mute(self):
        self.desktop.press("Mute Jukebox")
        self.applications[1].is_muted = True
        self.heard(self.applications[1], "muted")
        self.shows("Jukebox", "its button says Unmute", "Unmute Jukebox")

    def route(self):
        cinema = self.applications[2]
        self.desktop.press("Output for Cinema")
        self.press("Cinema", "Headphones chosen in its menu", "Headphones")
        cinema.sink = "Headphones"
        self.heard(cinema, "to Headphones, heard there")
        self.not_heard(cinema, "to Headphones, at Speakers", "Speakers")

    def take_pictures(self):
        display = self.desktop.display
        light = display.points()
        display.save_picture(self.pictures / "panel.png")
        self.desktop.set_dark(True)
        # Most pixels of the panel must be dark.
        self.row("Sonvel", "is dark on a dark desktop",
                 lambda: wait_until(lambda: 2 * (display.points() != light).sum() > (light != 0).sum()))
        display.save_picture(self.pictures / "panel-dark.png")
        self.desktop.set_dark(False)

    def restart(self):
        """Applications that are restarted get their row with all its settings back."""
        for application in self.applications:
            application.process.kill()
            self.row(application.name, "stopped: its row is paused",
                     lambda name=application.name: self.screen.wait_until_gone(f"Output for {name}"))
            self.shows_volume(application, "  and keeps its volume")
            self.desktop.play(application)
            self.shows(application.name, "started again", f"Output for {application.name}")
            self.heard(application, "  as before")

    def close_and_open(self):
        self.desktop.tray.icon().click()
        self.row("Sonvel", "the panel closes", lambda: wait_until(self.desktop.display.is_black))
        for application in self.applications:
            self.heard(application, "  as before")
        self.desktop.tray.icon().click()
        self.shows_volume(self.applications[0], "opened again")

    def reset(self):
        self.press("Sonvel", "Reset all", "Reset all")
        for application in self.applications:
            application.gain, application.is_muted = 1, False
            self.heard(application, "  at 100 percent where it was")
        self.press("Sonvel", "Everything → Speakers", "Everything → Speakers")
        for application in self.applications:
            application.sink = "Speakers"
            self.heard(application, "  at Speakers")
        self.not_heard(self.applications[2], "  no more at Headphones", "Headphones")
        for percent in (200, 50):
            self.desktop.set_volume(self.applications[0], percent)
            self.heard(self.applications[0], f"volume to {percent}")

    def quit(self):
        self.press("Sonvel", "Quit", "Quit")
        self.row("Sonvel", "ends with exit code 0", lambda: wait_until(lambda: self.sonvel.poll() == 0))
        self.applications[0].gain = 1
        for application in self.applications:
            self.heard(application, "  given back")
        self.row("Sonvel", "  and nothing of it is left",
                 lambda: wait_until(lambda: not self.desktop.machine.graph.of_ours()))


def test_each_step_is_heard_as_it_was_asked(tmp_path):
    with Desktop() as desktop:
        assert PanelCheck(desktop, tmp_path).run() == 0


if __name__ == "__main__":
    parser = argparse.ArgumentParser()
    parser.add_argument("--scale", type=float, default=1.0)
    parser.add_argument("pictures", nargs="?", default=".")
    options = parser.parse_args()
    with Desktop(scale=options.scale) as desktop:
        sys.exit(PanelCheck(desktop, options.pictures).run() != 0)
