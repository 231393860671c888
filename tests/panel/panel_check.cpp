// Works the real program as its users do, through the tray and a screen reader, while three players play, and
// prints what was asked beside what was heard at the sinks. Exits non-zero when a row is off.
//
//   panel-check [--scale FACTOR] [FOLDER for the pictures]
#include "panel/desktop_session.h"
#include "session/analysis.h"
#include "session/eventually.h"

#include <array>
#include <cstdio>
#include <cstring>
#include <exception>
#include <memory>
#include <string>

namespace sonvel::testing {

namespace {

using namespace session;

constexpr double kToleranceDB = 0.05;
constexpr double kInaudibleDB = -100.0; // beside the tones of others

struct PlayerOfMine {
  const char* name; ///< as its desktop entry says
  const char* binary;
  const char* color; ///< of its icon
  PlayerKind kind;
  Tone tone;
  double gain = 1.0; ///< as it should be heard
  std::unique_ptr<Player> player = nullptr;

  [[nodiscard]] std::string volume() const { return std::string(name) + " volume"; }
};

std::string inDecibels(double amplitude) {
  std::array<char, 32> text{};
  std::snprintf(text.data(), text.size(), "%.3f dB", decibels(amplitude));
  return amplitude > 0.0 ? text.data() : "-inf dB";
}

class PanelCheck {
 public:
  PanelCheck(double scale, std::filesystem::path pictures)
      : desktop_({.scale = scale})
      , pictures_(std::move(pictures)) {}

  /// The number of rows that are off.
  int run() {
    std::printf("%-12s %-44s %-14s %-14s %s\n", "who", "asked", "wanted", "heard", "");
    for (auto& player : players_)
      start(player);
    open();
    changeVolumes();
    mute();
    route();
    takePictures();
    restart();
    closeAndOpen();
    reset();
    quit();
    std::printf("%d of %d rows are off\n", rowsOff_, rows_);
    return rowsOff_;
  }

 private:
  void row(const std::string& who, const std::string& asked, const std::string& wanted,
           const std::string& heard, bool isRight) {
    std::printf("%-12s %-44s %-14s %-14s %s\n", who.c_str(), asked.c_str(), wanted.c_str(), heard.c_str(),
                isRight ? "ok" : "OFF");
    std::fflush(stdout);
    ++rows_;
    if (isRight) return;
    ++rowsOff_;
    std::fprintf(stderr, "On the screen is:\n%s", desktop_.describe().c_str());
  }

  void done(const std::string& who, const std::string& asked, bool isRight) {
    row(who, asked, "done", isRight ? "done" : "not done", isRight);
  }

  void expectTone(const PlayerOfMine& player, const std::string& asked, const Listener& sink) {
    const Tone tone{player.tone.frequency, player.tone.amplitude * player.gain};
    const bool isRight = sink.waitForTone(tone, kToleranceDB);
    row(player.name, asked, inDecibels(tone.amplitude), inDecibels(sink.toneAmplitude(tone.frequency)),
        isRight);
  }

  void expectInaudible(const PlayerOfMine& player, const std::string& asked, const Listener& sink) {
    const auto level = [&] { return sink.toneAmplitude(player.tone.frequency) / player.tone.amplitude; };
    const bool isRight = eventually([&] { return decibels(level()) < kInaudibleDB; });
    row(player.name, asked, "below -100 dB", inDecibels(level()), isRight);
  }

  void start(PlayerOfMine& player) {
    desktop_.applications().install(std::string("org.example.") + player.name, player.name,
                                    desktop_.sound().programPath(player.binary), player.color);
    play(player);
    expectTone(player, "starts", speakers_);
  }

  void play(PlayerOfMine& player) {
    player.player = std::make_unique<Player>(desktop_.sound(), player.kind, player.tone,
                                             PlayerOptions{.binaryName = player.binary});
  }

  void open() {
    done("Sonvel", "starts, its icon comes into the tray", desktop_.awaitTrayIcon());
    desktop_.clickTrayIcon();
    for (const auto& player : players_) {
      const auto slider = desktop_.control(player.volume());
      done(player.name, "has a row at 100 percent", slider && slider->value() == 100.0);
      expectTone(player, "taken over", speakers_);
    }
  }

  void setVolume(PlayerOfMine& player, int percent) {
    if (!desktop_.setValue(player.volume(), percent)) done(player.name, "has a slider", false);
    player.gain = percent / 100.0;
    expectTone(player, "volume to " + std::to_string(percent), speakers_);
  }

  void changeVolumes() {
    for (auto& player : players_) {
      setVolume(player, 150);
      setVolume(player, 25);
      setVolume(player, &player == &players_[0] ? 150 : 100);
      for (const auto& other : players_)
        if (&other != &player)
          expectTone(other, std::string("  while ") + player.name + " changes", speakers_);
    }
  }

  void mute() {
    const auto& player = players_[1];
    desktop_.press(std::string("Mute ") + player.name);
    expectInaudible(player, "muted", speakers_);
    done(player.name, "its button says Unmute", desktop_.shows(std::string("Unmute ") + player.name));
  }

  void route() {
    const auto& player = players_[2];
    desktop_.press(std::string("Output for ") + player.name);
    done(player.name, "Headphones chosen in its menu", desktop_.press("Headphones"));
    expectTone(player, "to Headphones, heard there", headphones_);
    expectInaudible(player, "to Headphones, at Speakers", speakers_);
  }

  void takePictures() {
    if (pictures_.empty()) return;
    desktop_.takePicture(pictures_ / "panel.png");
    desktop_.setDark(true);
    // Nothing tells another program that the colours have changed; the picture does.
    const auto dark = pictures_ / "panel-dark.png";
    const bool isDark = eventually([&] {
      desktop_.takePicture(dark);
      return std::filesystem::file_size(dark) > 0 && differs(dark, pictures_ / "panel.png");
    });
    desktop_.setDark(false);
    done("Sonvel", "pictures in the light and in the dark", isDark);
  }

  static bool differs(const std::filesystem::path& one, const std::filesystem::path& other) {
    return std::filesystem::file_size(one) != std::filesystem::file_size(other);
  }

  /// What is stopped and started again has its row, and all that was chosen in it.
  void restart() {
    for (auto& player : players_) {
      player.player.reset();
      done(player.name, "stopped: its row is paused",
           desktop_.hides(std::string("Output for ") + player.name));
      const auto slider = desktop_.control(player.volume());
      done(player.name, "  and keeps its volume", slider && slider->value() == player.gain * 100.0);
      play(player);
      if (&player == &players_[1]) {
        done(player.name, "started again", desktop_.shows(std::string("Output for ") + player.name));
        expectInaudible(player, "  muted as before", speakers_);
      } else {
        expectTone(player, "started again: as before", &player == &players_[2] ? headphones_ : speakers_);
      }
    }
  }

  void closeAndOpen() {
    desktop_.clickTrayIcon();
    done("Sonvel", "the panel closes", desktop_.hides("Quit"));
    expectTone(players_[0], "  heard as before", speakers_);
    expectInaudible(players_[1], "  muted as before", speakers_);
    expectTone(players_[2], "  heard as before", headphones_);
    desktop_.clickTrayIcon();
    const auto slider = desktop_.control(players_[0].volume());
    done("Sonvel", "and opens again", slider && slider->value() == 150.0);
  }

  void reset() {
    done("Sonvel", "Reset all", desktop_.press("Reset all"));
    for (auto& player : players_)
      player.gain = 1.0;
    expectTone(players_[0], "  at 100 percent", speakers_);
    expectTone(players_[1], "  unmuted", speakers_);
    expectTone(players_[2], "  still at Headphones", headphones_);
    done("Sonvel", "Everything \u2192 Speakers", desktop_.press("Everything \u2192 Speakers"));
    for (const auto& player : players_)
      expectTone(player, "  at Speakers", speakers_);
    expectInaudible(players_[2], "  no more at Headphones", headphones_);
    setVolume(players_[0], 200);
    setVolume(players_[0], 50);
  }

  void quit() {
    done("Sonvel", "Quit", desktop_.press("Quit"));
    done("Sonvel", "ends with exit code 0", sonvel_.wait() == 0);
    players_[0].gain = 1.0;
    for (const auto& player : players_)
      expectTone(player, "  given back", speakers_);
    const bool isClean = desktop_.sound().waitForGraph([](const Graph& graph) {
      for (const auto& object : graph.objects)
        if (object.property("node.name").starts_with("sonvel")) return false;
      return true;
    });
    done("Sonvel", "  and nothing of it is left", isClean);
  }

  DesktopSession desktop_;
  const std::filesystem::path pictures_;
  Listener speakers_{desktop_.sound(), "Speakers"};
  Listener headphones_{desktop_.sound(), "Headphones"};
  std::array<PlayerOfMine, 3> players_{
      PlayerOfMine{"Records", "records", "#3465a4", PlayerKind::pwPlay, {1000, 0.2}},
      PlayerOfMine{"Jukebox", "jukebox", "#c4572a", PlayerKind::paplay, {1700, 0.15}},
      PlayerOfMine{"Cinema", "cinema", "#5c8a3a", PlayerKind::ffplay, {2600, 0.1}}};
  ChildProcess sonvel_ = desktop_.startSonvel();
  int rows_ = 0;
  int rowsOff_ = 0;
};

} // namespace

} // namespace sonvel::testing

int main(int argc, char** argv) {
  double scale = 1.0;
  int next = 1;
  if (argc > 2 && std::strcmp(argv[1], "--scale") == 0) {
    scale = std::stod(argv[2]);
    next = 3;
  }
  try {
    return sonvel::testing::PanelCheck(scale, argc > next ? argv[next] : "").run() == 0 ? 0 : 1;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "panel-check: %s\n", error.what());
    return 2;
  }
}
