#pragma once

// Random events around the model, and the invariants that must always hold.

#include "audio/mixer_math.h"
#include "model/model_test.h"

#include <QCollator>
#include <algorithm>
#include <cstdlib>
#include <deque>
#include <random>

namespace sonvel {

using simulated::Call;
using simulated::Frame;

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
inline constexpr unsigned kSanitizerFactor = 10;
#else
inline constexpr unsigned kSanitizerFactor = 1;
#endif

/// Steps per walk, fewer under a sanitizer. SONVEL_WALK_STEPS overrides it.
inline constexpr unsigned kSteps = 100'000 / kSanitizerFactor;

/// Walks are repeatable; SONVEL_WALK_SEED gives another one.
inline constexpr std::uint64_t kSeed = 20'260'101;

inline constexpr std::size_t kHistoryLength = 30;

// Building and removing never fail at the same time: a session that can be neither built nor undone is left
// alone, which this walk does not check.
inline constexpr std::array kBuilding{Call::createProcessTap, Call::createAggregateDevice,
                                      Call::createIOProcID, Call::deviceStart};
inline constexpr std::array kTearingDown{Call::deviceStop, Call::destroyIOProcID,
                                         Call::destroyAggregateDevice};

/// Preflight results, mostly "authorized". None: no preflight function.
inline constexpr std::array<std::optional<int>, 7> kPreflightCodes{0, 0, 0, 0, 1, 2, std::nullopt};

inline constexpr std::array kDevices{"speakers", "headset", "usb"};

/// "" follows the default device.
inline constexpr std::array kRoutes{"",        "",        "",    "speakers", "speakers",
                                    "headset", "headset", "usb", "unknown"};

inline std::uint64_t fromEnvironment(const char* name, std::uint64_t otherwise) {
  const char* const text = std::getenv(name);
  return text != nullptr ? std::stoull(text) : otherwise;
}

/// A process that starts and ends. Processes of one application share a key.
struct Player {
  std::string name;
  std::string bundleID;
  float sample;                                ///< sums of different players' samples differ
  AudioObjectID process = kAudioObjectUnknown; ///< 0 while it does not run
  bool isPlaying = false;
};

class RandomWalkTest : public MixerTest {
 protected:
  RandomWalkTest();

  /// Runs the walk, calling `finishStep` after each step, and ends the program.
  void walk(const std::function<void()>& finishStep);

  /// Causes one random event, without waiting for its effects.
  void step();

  /// Checks the invariants when all effects have happened.
  void check() {
    checkRows();
    checkSessions();
    checkSound();
  }

  unsigned pick(unsigned count) { return static_cast<unsigned>(random_() % count); }

 private:
  /// A possible event of a step.
  struct Action {
    const char* name;
    unsigned weight; ///< relative frequency
    void (*act)(RandomWalkTest& walk);
  };

  static const std::vector<Action>& actions();

  /// A random element of `values`.
  template <class Values> const auto& anyOf(const Values& values) {
    return values.at(pick(static_cast<unsigned>(values.size())));
  }

  /// Appends to this step's history.
  void note(const std::string& text) { history_.back() += " " + text; }

  Player& anyPlayer() {
    auto& player = players_[pick(static_cast<unsigned>(players_.size()))];
    note(player.name);
    return player;
  }

  ChannelState* anyRow() {
    const auto& rows = model_->channels()->rows();
    auto* const row = rows.empty() ? nullptr : anyOf(rows).get();
    note(row != nullptr ? row->stableKey() : "none");
    return row;
  }

  std::optional<std::string> anyRoute() {
    const std::string route = anyOf(kRoutes);
    note(route);
    return route.empty() ? std::nullopt : std::optional(route);
  }

  void start(Player& player) {
    end(player);
    player.process = play(player.name, player.bundleID, player.sample);
    player.isPlaying = true;
    note("as " + std::to_string(player.process));
  }

  void end(Player& player) {
    if (player.process != kAudioObjectUnknown) audio_.removeProcess(player.process);
    player.process = kAudioObjectUnknown;
    player.isPlaying = false;
  }

  void failTearingDown();

  /// The sessions' taps, without those of a probe and standby taps.
  std::vector<simulated::Tap> taps() const {
    auto taps = audio_.taps();
    std::erase_if(taps, [](const auto& tap) {
      return tap.description.name == "SonvelProbe" || tap.description.processes.empty();
    });
    return taps;
  }

  void checkRows() const;
  void checkSessions();
  void checkSound();

  /// The row whose session has the tap; null if there is none.
  const ChannelState* rowOf(const simulated::Tap& tap) const {
    for (const auto& row : model_->channels()->rows())
      if (row->active() && has(tap.description.processes, row->sessionID())) return row.get();
    return nullptr;
  }

  static bool has(const auto& values, const auto& value) {
    return std::ranges::find(values, value) != values.end();
  }

  void expect(const Player& player, std::map<std::string, std::optional<float>>& sound);

  std::mt19937_64 random_;
  std::deque<std::string> history_;
  std::vector<Player> players_;
  std::optional<std::string> defaultDevice_ = "speakers";
  std::vector<ChannelState*> shown_; ///< the rows of a view that only follows change signals

  // How often a device's sound was checked and how often that was impossible, and how often an application
  // was heard through a session at its row's gain.
  int heardChecks_ = 0;
  int skippedHeardChecks_ = 0;
  int heardAtItsGain_ = 0;
};

} // namespace sonvel
