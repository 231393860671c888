#include "panel/desktop_session.h"
#include "session/access_manager.h"
#include "session/eventually.h"

#include <gtest/gtest.h>
#include <pipewire/permission.h>

#include <algorithm>
#include <array>
#include <csignal>
#include <future>
#include <memory>

namespace sonvel::testing {

namespace {

using namespace session;
using namespace std::chrono_literals;

constexpr double kToleranceDB = 0.05;
constexpr std::array kTones{Tone{1000, 0.2}, Tone{1700, 0.15}, Tone{2600, 0.1}};
constexpr std::array kKinds{PlayerKind::pwPlay, PlayerKind::paplay, PlayerKind::ffplay};
constexpr std::array kNames{"Records", "Jukebox", "Cinema"};
constexpr std::array kBinaries{"records", "jukebox", "cinema"};

std::string volume(std::size_t player) {
  return std::string(kNames.at(player)) + " volume";
}

/// The real program with three players, on a desktop.
class Program {
 public:
  explicit Program(DesktopOptions options = {})
      : desktop(std::move(options)) {
    for (std::size_t i = 0; i < kTones.size(); ++i) {
      desktop.applications().install(std::string("org.example.") + kNames.at(i), kNames.at(i),
                                     desktop.sound().programPath(kBinaries.at(i)), "#3465a4");
      players.at(i) = std::make_unique<Player>(desktop.sound(), kKinds.at(i), kTones.at(i),
                                               PlayerOptions{.binaryName = kBinaries.at(i)});
    }
    EXPECT_TRUE(isHeard(1.0, 20s));
    process = desktop.startSonvel();
  }

  /// Opens the panel from the tray.
  void open() {
    ASSERT_TRUE(desktop.awaitTrayIcon());
    desktop.clickTrayIcon();
    ASSERT_TRUE(desktop.shows("Quit"));
  }

  /// All three at half of their level, by their sliders.
  void halve() {
    for (std::size_t i = 0; i < kTones.size(); ++i)
      ASSERT_TRUE(desktop.setValue(volume(i), 50));
    ASSERT_TRUE(isHeard(0.5, 20s));
  }

  [[nodiscard]] bool isHeard(double gain, std::chrono::milliseconds within) const {
    const auto deadline = std::chrono::steady_clock::now() + within;
    return std::ranges::all_of(kTones, [&](const Tone& tone) {
      const auto left =
          std::chrono::duration_cast<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
      return speakers.waitForTone({tone.frequency, tone.amplitude * gain}, kToleranceDB, std::max(0ms, left));
    });
  }

  [[nodiscard]] bool isGone() {
    return desktop.sound().waitForGraph([](const Graph& graph) {
      return std::ranges::none_of(graph.objects, [](const GraphObject& object) {
        return object.property("node.name").starts_with("sonvel");
      });
    });
  }

  DesktopSession desktop;
  Listener speakers{desktop.sound(), "Speakers"};
  std::array<std::unique_ptr<Player>, kTones.size()> players;
  ChildProcess process;
};

TEST(ProgramTest, EndsOnASignalWhenEveryApplicationHasItsOwnSound) {
  Program program;
  program.open();
  program.halve();
  program.process.signal(SIGTERM);
  program.process.signal(SIGINT); // while it is at it
  EXPECT_EQ(program.process.wait(), 0);
  EXPECT_TRUE(program.isHeard(1.0, 5s));
  EXPECT_TRUE(program.isGone());
}

TEST(ProgramTest, SecondStartShowsThePanelOfTheFirst) {
  Program program;
  ASSERT_TRUE(program.desktop.awaitTrayIcon());
  auto second = program.desktop.startSonvel();
  EXPECT_EQ(second.wait(), 0);
  EXPECT_TRUE(program.desktop.shows(volume(0)));
  EXPECT_TRUE(program.process.running());
  EXPECT_TRUE(program.desktop.press("Quit"));
  EXPECT_EQ(program.process.wait(), 0);
}

TEST(ProgramTest, OpensAWindowWhereThereIsNoTray) {
  Program program({.hasTray = false});
  EXPECT_TRUE(program.desktop.shows(volume(0)));
  program.halve();
  EXPECT_TRUE(program.desktop.press("Quit"));
  EXPECT_EQ(program.process.wait(), 0);
  EXPECT_TRUE(program.isHeard(1.0, 5s));
}

TEST(ProgramTest, SaysWhenSoundIsLostAndGoesOnByItself) {
  Program program;
  program.open();
  program.halve();
  program.desktop.sound().kill(Daemon::pipewire);
  EXPECT_TRUE(
      program.desktop.shows("The sound service has stopped. Sonvel goes on by itself when it is back."));
  program.desktop.sound().restart(Daemon::pipewire);
  EXPECT_TRUE(
      program.desktop.hides("The sound service has stopped. Sonvel goes on by itself when it is back."));
  ASSERT_TRUE(program.desktop.shows("0 playing · 3 idle")) << "their players have ended with it";
  const Listener speakers(program.desktop.sound(), "Speakers");
  const Player player(program.desktop.sound(), PlayerKind::pwPlay, kTones[0], {.binaryName = kBinaries[0]});
  EXPECT_TRUE(speakers.waitForTone({kTones[0].frequency, kTones[0].amplitude * 0.5}, kToleranceDB))
      << "as it was chosen before\n"
      << program.desktop.describe();
}

TEST(ProgramTest, RestrictedProgramTakesNothingOverUntilItMay) {
  Program program({.sound = {.accessArguments = R"(access.restricted = [ "sonvel" ])"}});
  program.open();
  EXPECT_TRUE(program.desktop.shows("Grant Audio Access"));
  EXPECT_TRUE(
      program.desktop.shows("Access is currently denied. Allow “Sonvel” in the rules of the sound server, "
                            "then it appears automatically."));
  EXPECT_TRUE(program.isHeard(1.0, 5s));
  EXPECT_TRUE(program.isGone());

  AccessManager(program.desktop.sound()).let(AccessTo::everything, PW_PERM_ALL);
  EXPECT_TRUE(program.desktop.hides("Grant Audio Access"));
  program.halve();
}

TEST(ProgramTest, WithdrawnRightsGiveEveryApplicationItsOwnSound) {
  Program program;
  program.open();
  program.halve();
  const auto status = program.desktop.control("3 playing");
  ASSERT_TRUE(status);
  AccessManager(program.desktop.sound())
      .let(AccessTo::everything, PW_PERM_R | PW_PERM_X); // as far as looking goes
  // Both at once: the next look at the applications has a new status.
  auto isHeard = std::async(std::launch::async, [&] { return program.isHeard(1.0, 6s); });
  EXPECT_TRUE(eventually([&] {
    return status->name() == "Audio access was revoked. Audio was restored to its normal output.";
  }));
  EXPECT_TRUE(isHeard.get());
  EXPECT_TRUE(program.isHeard(0.5, 30s)) << "the server lets everyone in who comes anew";
}

} // namespace

} // namespace sonvel::testing
