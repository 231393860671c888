#pragma once

#include "model/model_test.h"

#include <deque>
#include <random>

namespace sonvel {

/// A world in which anything may happen at random, and what must hold in it whatever has happened.
class RandomWalk : public MixerTest {
 protected:
  RandomWalk();

  void seed(std::uint64_t value) { random_.seed(value); }

  /// Makes one thing happen, without waiting for what follows from it.
  void step();

  /// Checks what must hold once everything has followed.
  void check();

  /// The last steps, for whoever has to find out.
  std::string history() const;

  unsigned pick(unsigned count) { return static_cast<unsigned>(random_() % count); }

  /// How often a device was checked by ear and how often it could not be, and how often an application was
  /// heard through a session at the gain of its row.
  int heardChecks_ = 0;
  int skippedHeardChecks_ = 0;
  int heardAtItsGain_ = 0;

 private:
  /// A process that comes and goes. Those of one application share a key.
  struct Player {
    std::string name;
    std::string bundleID;
    simulated::Frame sample;                     ///< no sum of some players' samples is that of others
    AudioObjectID process = kAudioObjectUnknown; ///< 0 while it does not run
    bool isPlaying = false;
    bool isSilent = false;

    simulated::Frame sound() const { return isPlaying && !isSilent ? sample : simulated::Frame{}; }
  };

  /// What a device should make audible; none if it can't be told.
  using Expectation = std::map<std::string, std::optional<simulated::Frame>>;

  /// What the controller holds.
  struct Sessions {
    std::map<AudioObjectID, std::optional<std::string>> outputUIDs; ///< by application
    bool isRetrying = false;                                        ///< something of them could not be undone
  };

  /// What exists of a session; 0 for no aggregate device.
  struct SessionObjects {
    AudioObjectID process;
    AudioObjectID tap;
    AudioObjectID aggregate;
  };

  /// Something that may happen in one step.
  struct Action {
    const char* name;
    unsigned weight; ///< how often it happens, compared with the others
    void (*act)(RandomWalk& walk);
  };

  static const std::vector<Action>& actions();

  void loseObject();
  void failTearingDown();
  std::optional<SessionObjects> anySession();
  Player* anyRunningPlayer();

  /// One of `values`, by chance.
  template <class Values> const auto& anyOf(const Values& values) {
    return values.at(pick(static_cast<unsigned>(values.size())));
  }

  /// Adds to the history of this step.
  void note(const std::string& text) { history_.back() += " " + text; }

  void start(Player& player);
  ChannelState* anyRow();
  std::optional<std::string> anyRoute();

  /// The taps of sessions, which a probe's is not.
  std::vector<simulated::Tap> sessionTaps() const;

  void checkRows() const;
  void checkRemembered() const;
  void checkObjects(const Sessions& sessions);
  void checkSound();
  Sessions sessions();
  void followTuning(const Sessions& sessions);
  ChannelState* activeRowOf(AudioObjectID process) const;
  Expectation expectedSound();
  void expectPlayer(const Player& player, Expectation& expected);

  std::mt19937_64 random_;
  std::deque<std::string> history_;
  std::vector<Player> players_;
  std::map<std::string, bool> devices_{{"speakers", true}, {"headset", true}, {"usb", true}}; ///< present
  std::optional<std::string> defaultDevice_ = "speakers";
  std::set<AudioObjectID> damaged_; ///< processes of whose sessions the system has lost something

  // Whether a session is known to follow its row. One that has outlived the time when a row stood for its
  // process keeps what it had, until it is built anew for a row.
  std::set<AudioObjectID> inTune_;
  std::set<AudioObjectID> formerSessions_;  ///< at the last check
  std::set<std::string> formerActiveKeys_;  ///< of the rows that were active at the last check
  std::set<const QObject*> turnedToOthers_; ///< rows that came to stand for another process while active
};

} // namespace sonvel
