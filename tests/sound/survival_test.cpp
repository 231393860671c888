#include "session/analysis.h"
#include "session/listener.h"
#include "session/tone_client.h"
#include "sound/controlled_sound.h"
#include "sound/tap_holder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <memory>

namespace sonvel::sound {

namespace {

using namespace session;
using namespace std::chrono_literals;

constexpr double kToleranceDB = 0.05;
constexpr Tone kTone{.frequency = 1000, .amplitude = 0.4};

Tone scaled(Tone tone, double gain) {
  return {.frequency = tone.frequency, .amplitude = tone.amplitude * gain};
}

/// One application that plays, taken over at half its level, heard so.
struct TappedTone {
  explicit TappedTone(const PrivateSession& session,
                      const std::optional<std::string>& outputUID = std::nullopt)
      : client(session)
      , listener(std::in_place, session, outputUID.value_or("Speakers"))
      , sound(session) {
    client.open("tone", {.tone = kTone});
    app = sound.findApp(client.pid()).value();
    sound.add(app, 0.5F, outputUID);
    EXPECT_TRUE(listener->waitForTone(scaled(kTone, 0.5), kToleranceDB));
  }

  ToneClient client;
  std::optional<Listener> listener;
  ControlledSound sound;
  AudioApp app;
};

} // namespace

TEST(Survival, RestartOfTheSessionManagerIsAPause) {
  PrivateSession session;
  TappedTone tapped(session);
  tapped.listener.reset(); // the session manager does not manage to set up a device that somebody listens to
  session.restart(Daemon::wireplumber);
  const Listener speakers(session, "Speakers");
  EXPECT_TRUE(speakers.waitForTone(scaled(kTone, 0.5), kToleranceDB));
  EXPECT_TRUE(tapped.sound.remove(tapped.app));
  EXPECT_TRUE(speakers.waitForTone(kTone, kToleranceDB));
  EXPECT_FALSE(holdsAnythingOfOurs(session.graph()));
}

TEST(Survival, DeviceThatGoesAndComesBackIsPlayedToAgain) {
  PrivateSession session;
  TappedTone tapped(session, "Headphones");
  session.removeSink("Headphones");
  session.addSink("Headphones", "Headphones");
  const Listener headphones(session, "Headphones");
  EXPECT_TRUE(headphones.waitForTone(scaled(kTone, 0.5), kToleranceDB));
  EXPECT_TRUE(tapped.sound.remove(tapped.app));
}

TEST(Survival, RestartOfTheServerLeavesNothingToUndoAndAllToBeDoneAgain) {
  PrivateSession session;
  TappedTone tapped(session);
  session.restart(Daemon::pipewire);
  EXPECT_TRUE(tapped.sound.remove(tapped.app));

  ToneClient client(session);
  client.open("tone", {.tone = kTone});
  const auto app = tapped.sound.findApp(client.pid());
  ASSERT_TRUE(app);
  const Listener speakers(session, "Speakers");
  tapped.sound.add(*app, 0.5F);
  EXPECT_TRUE(speakers.waitForTone(scaled(kTone, 0.5), kToleranceDB));
}

TEST(Survival, WhatTheServerLosesIsMadeAgain) {
  const PrivateSession session;
  const TappedTone tapped(session);
  for (const std::string name : {"sonvel-aggregate", "sonvel-tap"}) {
    SCOPED_TRACE(name);
    GraphConnection connection(session.socketPath());
    const auto deadline = std::chrono::steady_clock::now() + 20s;
    const Graph graph = connection.snapshot(deadline);
    const auto lost = std::ranges::find_if(graph.objects, [&](const GraphObject& object) {
      return object.property("node.name").starts_with(name);
    });
    ASSERT_NE(lost, graph.objects.end());
    const auto serial = lost->property("object.serial");
    connection.destroy(lost->id);
    ASSERT_TRUE(connection.waitFor(
        [&](const Graph& now) {
          const GraphObject* node = now.node(lost->property("node.name"));
          return node == nullptr || node->property("object.serial") != serial;
        },
        deadline));
    EXPECT_TRUE(tapped.listener->waitForTone(scaled(kTone, 0.5), kToleranceDB));
  }
}

TEST(Survival, StreamThatEndsInATapLeavesNothing) {
  // What stayed under its ID would send the next stream of that ID, anyone's, into the tap.
  const PrivateSession session;
  TappedTone tapped(session);
  tapped.client.stop();
  EXPECT_TRUE(session.waitForGraph([](const Graph& graph) {
    return std::ranges::none_of(graph.metadata, [](const MetadataEntry& entry) {
      return entry.value.starts_with("sonvel") || entry.key.starts_with("sonvel");
    });
  }));
  ToneClient stranger(session);
  stranger.open("stranger", {.tone = kTone});
  EXPECT_TRUE(tapped.listener->waitForTone(kTone, kToleranceDB));
}

TEST(Survival, DeadOrHangingServerIsAnsweredInTime) {
  PrivateSession session;
  TappedTone tapped(session);
  const auto answersInTime = [&] {
    const auto start = std::chrono::steady_clock::now();
    tapped.sound.with([](HardwareController& controller) { return controller.audibleApps(); });
    EXPECT_LT(std::chrono::steady_clock::now() - start, 2s);
  };
  session.stop(Daemon::pipewire);
  answersInTime();
  session.resume(Daemon::pipewire);
  EXPECT_TRUE(tapped.listener->waitForTone(scaled(kTone, 0.5), kToleranceDB));

  session.kill(Daemon::pipewire);
  answersInTime();
  EXPECT_TRUE(tapped.sound.remove(tapped.app));
}

TEST(Survival, KilledWhileThreeAreControlledLeavesEachAtItsOwnRoute) {
  const PrivateSession session;
  const std::array tones{Tone{1000, 0.3}, Tone{1700, 0.2}, Tone{2600, 0.1}};
  std::array<std::unique_ptr<ToneClient>, 3> clients;
  for (std::size_t i = 0; i < tones.size(); ++i) {
    clients.at(i) = std::make_unique<ToneClient>(session);
    clients.at(i)->open("tone", {.tone = tones.at(i)});
  }
  const Listener speakers(session, "Speakers");
  for (const auto& tone : tones)
    ASSERT_TRUE(speakers.waitForTone(tone, kToleranceDB));

  TapHolder holder(session, 0.25F);
  ASSERT_EQ(holder.held(), 3);
  for (const auto& tone : tones)
    ASSERT_TRUE(speakers.waitForTone(scaled(tone, 0.25), kToleranceDB));

  holder.kill();
  ASSERT_TRUE(speakers.waitForFrames(speakers.mark(), kSampleRate / 2, 2s)); // within a second …
  const std::uint64_t mark = speakers.mark();
  ASSERT_TRUE(speakers.waitForFrames(mark, kSampleRate / 2, 2s));
  const auto heard = speakers.since(mark); // … all of this half is as it was
  for (const auto& tone : tones)
    EXPECT_NEAR(decibels(toneAmplitude(heard.left, tone.frequency) / tone.amplitude), 0.0, kToleranceDB);
  EXPECT_FALSE(holdsAnythingOfOurs(session.graph()));
}

TEST(Survival, EndGivesAllBack) {
  const PrivateSession session;
  ToneClient client(session);
  client.open("tone", {.tone = kTone});
  const Listener speakers(session, "Speakers");
  ASSERT_TRUE(speakers.waitForTone(kTone, kToleranceDB));
  TapHolder holder(session, 0.25F);
  ASSERT_TRUE(speakers.waitForTone(scaled(kTone, 0.25), kToleranceDB));
  EXPECT_EQ(holder.finish(), 0);
  EXPECT_TRUE(speakers.waitForTone(kTone, kToleranceDB));
  EXPECT_FALSE(holdsAnythingOfOurs(session.graph()));
}

} // namespace sonvel::sound
