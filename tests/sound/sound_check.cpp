// Drives the engine on a private sound session with three players as people use them, and prints what was
// asked beside what was heard at the sinks. Exits non-zero when a row is off.
#include "session/analysis.h"
#include "session/listener.h"
#include "session/player.h"
#include "sound/controlled_sound.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <exception>
#include <memory>
#include <string>
#include <vector>

namespace sonvel::sound {

namespace {

using namespace session;

constexpr double kToleranceDB = 0.05;
constexpr double kInaudibleDB = -100.0; // beside the tones of others
constexpr std::chrono::seconds kPatience{5};
constexpr std::chrono::milliseconds kSilence{200};

struct PlayerOfMine {
  const char* name;
  PlayerKind kind;
  Tone tone;
  std::unique_ptr<Player> player = nullptr;
  AudioApp app = {};
};

class SoundCheck {
 public:
  /// The number of rows that are off.
  int run() {
    std::printf("%-26s %-34s %-14s %-14s %s\n", "player", "asked", "wanted", "heard", "");
    for (auto& player : players_)
      checkAlone(player);
    checkTogether();
    std::printf("%d of %d rows are off\n", rowsOff_, rows_);
    return rowsOff_;
  }

 private:
  void row(const std::string& who, const std::string& asked, const std::string& wanted,
           const std::string& heard, bool isRight) {
    std::printf("%-26s %-34s %-14s %-14s %s\n", who.c_str(), asked.c_str(), wanted.c_str(), heard.c_str(),
                isRight ? "ok" : "OFF");
    std::fflush(stdout);
    ++rows_;
    if (!isRight) ++rowsOff_;
  }

  static std::string inDecibels(double amplitude) {
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%.3f dB", decibels(amplitude));
    return amplitude > 0.0 ? text.data() : "-inf dB";
  }

  void start(PlayerOfMine& player) {
    player.player = std::make_unique<Player>(session_, player.kind, player.tone);
    const bool isHeard = speakers_.waitForTone(player.tone, kToleranceDB, kPatience);
    const auto app = sound_.findApp(player.player->pid());
    row(player.name, "starts", inDecibels(player.tone.amplitude),
        inDecibels(speakers_.toneAmplitude(player.tone.frequency)), isHeard && app);
    if (app) player.app = *app;
  }

  void expectTone(const PlayerOfMine& player, const std::string& asked, const Listener& sink, double gain) {
    const Tone tone{player.tone.frequency, player.tone.amplitude * gain};
    const bool isRight = sink.waitForTone(tone, kToleranceDB, kPatience);
    row(player.name, asked, inDecibels(tone.amplitude), inDecibels(sink.toneAmplitude(tone.frequency)),
        isRight);
  }

  void expectZeros(const PlayerOfMine& player, const std::string& asked, const Listener& sink) {
    const bool isRight = sink.waitForExactZeros(kSilence, kPatience);
    row(player.name, asked, "exact zeros", isRight ? "exact zeros" : "something", isRight);
  }

  /// Gains, mute and route of one player that nothing else sounds beside, so that zeros can be exact.
  void checkAlone(PlayerOfMine& player) {
    start(player);
    sound_.add(player.app);
    expectTone(player, "taken over", speakers_, 1.0);
    sound_.setGain(player.app, 0.0F);
    expectZeros(player, "gain 0", speakers_);
    for (const float gain : {0.25F, 0.5F, 1.0F, 2.0F}) {
      sound_.setGain(player.app, gain);
      expectTone(player, "gain " + std::to_string(gain).substr(0, 4), speakers_, static_cast<double>(gain));
    }
    sound_.setMuted(player.app, true);
    expectZeros(player, "muted", speakers_);
    sound_.setMuted(player.app, false);
    expectTone(player, "unmuted", speakers_, 2.0);
    sound_.setGain(player.app, 0.5F);
    sound_.setOutput(player.app, "Headphones");
    expectTone(player, "to Headphones, heard there", headphones_, 0.5);
    expectZeros(player, "to Headphones, at Speakers", speakers_);
    sound_.setOutput(player.app, std::nullopt);
    expectTone(player, "back to the system output", speakers_, 0.5);
    expectZeros(player, "back, at Headphones", headphones_);
    const bool isRestored = sound_.remove(player.app);
    expectTone(player, "given back", speakers_, 1.0);
    const bool isClean =
        session_.waitForGraph([](const Graph& graph) { return !holdsAnythingOfOurs(graph); });
    row(player.name, "given back, the graph", "nothing of ours", isClean ? "nothing of ours" : "leftovers",
        isRestored && isClean);
    player.player.reset();
    expectZeros(player, "ended", speakers_);
  }

  /// While one of three is changed, the other two stay as they are.
  void checkTogether() {
    for (auto& player : players_)
      start(player);
    for (auto& player : players_)
      sound_.add(player.app);
    for (auto& player : players_) {
      for (const float gain : {0.25F, 2.0F, 1.0F}) {
        sound_.setGain(player.app, gain);
        expectTone(player, "gain " + std::to_string(gain).substr(0, 4) + " beside others", speakers_,
                   static_cast<double>(gain));
        expectOthersUnmoved(player);
      }
      sound_.setMuted(player.app, true);
      expectInaudible(player);
      expectOthersUnmoved(player);
      sound_.setMuted(player.app, false);
      sound_.setOutput(player.app, "Headphones");
      expectTone(player, "to Headphones beside others", headphones_, 1.0);
      expectOthersUnmoved(player);
      sound_.setOutput(player.app, std::nullopt);
      expectTone(player, "back beside others", speakers_, 1.0);
    }
    for (auto& player : players_) {
      sound_.remove(player.app);
      expectTone(player, "given back beside others", speakers_, 1.0);
    }
  }

  void expectInaudible(const PlayerOfMine& player) {
    const auto level = [&] { return speakers_.toneAmplitude(player.tone.frequency) / player.tone.amplitude; };
    const bool isRight = waitUntil([&] { return decibels(level()) < kInaudibleDB; }, kPatience);
    row(player.name, "muted beside others", "below -100 dB", inDecibels(level()), isRight);
  }

  void expectOthersUnmoved(const PlayerOfMine& changed) {
    for (const auto& player : players_)
      if (&player != &changed)
        expectTone(player, std::string("  while ") + changed.name + " changes", speakers_, 1.0);
  }

  PrivateSession session_;
  Listener speakers_{session_, "Speakers"};
  Listener headphones_{session_, "Headphones"};
  ControlledSound sound_{session_};
  std::array<PlayerOfMine, 3> players_{PlayerOfMine{"pw-play", PlayerKind::pwPlay, {1000, 0.2}},
                                       PlayerOfMine{"paplay", PlayerKind::paplay, {1700, 0.15}},
                                       PlayerOfMine{"ffplay", PlayerKind::ffplay, {2600, 0.1}}};
  int rows_ = 0;
  int rowsOff_ = 0;
};

} // namespace

} // namespace sonvel::sound

int main() {
  try {
    return sonvel::sound::SoundCheck().run() == 0 ? 0 : 1;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "sound-check: %s\n", error.what());
    return 2;
  }
}
