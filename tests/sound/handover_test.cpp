#include "session/analysis.h"
#include "session/listener.h"
#include "session/tone_client.h"
#include "sound/controlled_sound.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <functional>
#include <vector>

namespace sonvel::sound {

namespace {

using namespace session;
using namespace std::chrono_literals;

constexpr int kQuantum = 1024;
constexpr std::size_t kSettledFrames = 8 * kQuantum;

/// What was heard from `mark` until some cycles after now.
Recording hearUntilSettled(const Listener& listener, std::uint64_t mark) {
  EXPECT_TRUE(listener.waitForFrames(listener.mark(), kSettledFrames, 20s));
  return listener.since(mark);
}

/// Does something until nothing was lost on the way to the listener meanwhile, and gives what was heard: when
/// a busy machine makes the whole graph miss a cycle, nothing can be said of what was done in it.
Recording hearWhile(const Listener& listener, const std::function<void()>& act) {
  Recording recording;
  for (int attempt = 0; attempt < 5; ++attempt) {
    const auto mark = listener.mark();
    act();
    recording = hearUntilSettled(listener, mark);
    if (recording.complete) return recording;
  }
  ADD_FAILURE() << "cycles of the graph were lost each time";
  return recording;
}

/// Where in the period the impulses are, on the clock of the graph.
std::vector<std::uint64_t> impulsePhases(const Recording& recording, float threshold, int period) {
  std::vector<std::uint64_t> phases;
  for (const auto index : impulsePositions(recording.left, threshold))
    phases.push_back((recording.position + index) % static_cast<std::uint64_t>(period));
  return phases;
}

/// Frames that were lost, came twice or were silent.
long faultyFrames(const Recording& recording, double scale) {
  long frames = 0;
  for (const auto& fault : counterFaults(recording.left, scale))
    frames += std::max(std::labs(fault.lost), static_cast<long>(fault.silent));
  return frames;
}

} // namespace

TEST(Handover, TapAddsNoSampleOfDelay) {
  const PrivateSession session;
  ToneClient client(session);
  constexpr int kPeriod = 4800;
  client.open("impulses", {.signal = Signal::impulses, .tone = {.amplitude = 0.8}, .period = kPeriod});
  const Listener speakers(session, "Speakers");
  ControlledSound sound(session);
  const auto app = sound.findApp(client.pid());
  ASSERT_TRUE(app);

  const auto direct = impulsePhases(hearWhile(speakers, [] {}), 0.7F, kPeriod);
  sound.add(*app, 0.5F);
  ASSERT_TRUE(speakers.waitForFrames(speakers.mark(), kSettledFrames, 20s));
  const auto tapped = impulsePhases(hearWhile(speakers, [] {}), 0.35F, kPeriod);

  ASSERT_FALSE(direct.empty());
  ASSERT_FALSE(tapped.empty());
  for (const auto phase : tapped)
    EXPECT_EQ(phase, direct.front());
}

TEST(Handover, TakingOverAndGivingBackCostAtMostOneCycle) {
  const PrivateSession session({.quantum = kQuantum});
  ToneClient client(session);
  constexpr double kAmplitude = 0.5;
  client.open("counter", {.signal = Signal::counter, .tone = {.amplitude = kAmplitude}});
  const Listener speakers(session, "Speakers");
  ControlledSound sound(session);
  const auto app = sound.findApp(client.pid());
  ASSERT_TRUE(app);

  for (int round = 0; round < 10; ++round) {
    SCOPED_TRACE(round);
    bool isTapped = false;
    const auto takeOver = [&] {
      if (isTapped) {
        EXPECT_TRUE(sound.remove(*app));
      }
      sound.add(*app);
      isTapped = true;
    };
    const auto giveBack = [&] {
      if (!isTapped) sound.add(*app);
      EXPECT_TRUE(sound.remove(*app));
      isTapped = false;
    };
    EXPECT_LE(faultyFrames(hearWhile(speakers, takeOver), kAmplitude), kQuantum) << "taken over";
    EXPECT_LE(faultyFrames(hearWhile(speakers, giveBack), kAmplitude), kQuantum) << "given back";
  }
}

TEST(Handover, OthersOnTheDeviceLoseNothing) {
  const PrivateSession session;
  ToneClient other(session);
  constexpr double kAmplitude = 0.5;
  other.open("counter", {.signal = Signal::counter, .tone = {.amplitude = kAmplitude}});
  ToneClient client(session); // its own sound would be in the way
  client.open("silence", {.signal = Signal::silence});
  const Listener speakers(session, "Speakers");
  ControlledSound sound(session);
  const auto app = sound.findApp(client.pid());
  ASSERT_TRUE(app);

  for (int round = 0; round < 5; ++round) {
    const auto heard = hearWhile(speakers, [&] {
      sound.add(*app);
      sound.setOutput(*app, "Headphones");
      sound.setOutput(*app, std::nullopt);
      EXPECT_TRUE(sound.remove(*app));
    });
    EXPECT_EQ(faultyFrames(heard, kAmplitude), 0);
  }
}

TEST(Handover, ProbeHearsAndIsNotHeard) {
  const PrivateSession session;
  ControlledSound sound(session);
  EXPECT_EQ(sound.probe(), std::nullopt);

  ToneClient client(session);
  constexpr double kAmplitude = 0.5;
  client.open("counter", {.signal = Signal::counter, .tone = {.amplitude = kAmplitude}});
  const Listener speakers(session, "Speakers");
  ASSERT_TRUE(sound.findApp(client.pid()));
  const auto heard = hearWhile(speakers, [&] { EXPECT_EQ(sound.probe(), true); });
  EXPECT_EQ(faultyFrames(heard, kAmplitude), 0);
  EXPECT_FALSE(holdsAnythingOfOurs(session.graph()));

  client.setAmplitude("counter", 0.0);
  ASSERT_TRUE(speakers.waitForExactZeros(100ms));
  EXPECT_EQ(sound.probe(), false);
}

} // namespace sonvel::sound
