#include "audio/audio_permission.h"
#include "desktop/consent_library.h"
#include "session/access_manager.h"
#include "session/listener.h"
#include "session/player.h"
#include "session/tone_client.h"
#include "sound/controlled_sound.h"
#include "sound/tap_holder.h"

#include <gtest/gtest.h>
#include <pipewire/permission.h>

#include <algorithm>
#include <array>
#include <memory>

namespace sonvel::sound {

namespace {

using namespace session;
using namespace std::chrono_literals;

constexpr double kToleranceDB = 0.05;
constexpr Tone kTone{.frequency = 1000, .amplitude = 0.4};
constexpr std::uint32_t kLookOnly = PW_PERM_R | PW_PERM_X;

Tone scaled(Tone tone, double gain) {
  return {.frequency = tone.frequency, .amplitude = tone.amplitude * gain};
}

SessionOptions withAccess(const std::string& list) {
  return {.accessArguments = "access." + list + " = [ \"tap-holder\" ]"};
}

/// Three players on the default device and a stream that its user moved to the headphones.
struct Controlled {
  Controlled() {
    for (std::size_t i = 0; i < kTones.size(); ++i)
      players.at(i) = std::make_unique<Player>(session, kKinds.at(i), kTones.at(i));
    manager.route(moved.open("tone", {.tone = kTone}), "Headphones");
    EXPECT_TRUE(isHeard(1.0, 5s));
  }

  /// Takes all of them over at a quarter.
  void take() {
    for (const auto& player : players)
      sound.add(sound.findApp(player->pid()).value(), 0.25F);
    sound.add(sound.findApp(moved.pid()).value(), 0.25F, "Headphones");
  }

  /// Whether each is heard, at its level times `gain`, where its user wants it.
  bool isHeard(double gain, std::chrono::milliseconds within) const {
    const auto deadline = std::chrono::steady_clock::now() + within;
    const auto hears = [&](const Listener& listener, Tone tone) {
      const auto left =
          std::chrono::duration_cast<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
      return listener.waitForTone(scaled(tone, gain), kToleranceDB, std::max(0ms, left));
    };
    return hears(headphones, kTone) &&
           std::ranges::all_of(kTones, [&](const Tone& tone) { return hears(speakers, tone); });
  }

  static constexpr std::array kTones{Tone{1700, 0.3}, Tone{2600, 0.2}, Tone{3500, 0.1}};
  static constexpr std::array kKinds{PlayerKind::pwPlay, PlayerKind::paplay, PlayerKind::ffplay};

  const PrivateSession session;
  AccessManager manager{session};
  std::array<std::unique_ptr<Player>, kTones.size()> players;
  ToneClient moved{session};
  const Listener speakers{session, "Speakers"};
  const Listener headphones{session, "Headphones"};
  ControlledSound sound{session};
};

struct Withdrawal {
  const char* name;
  AccessTo what;
  std::uint32_t mask;
};

class Withdrawn : public testing::TestWithParam<Withdrawal> {};

} // namespace

TEST(Rights, RestrictingServerDeniesUntilItGrants) {
  const PrivateSession session(withAccess("restricted"));
  ToneClient client(session);
  client.open("tone", {.tone = kTone});
  const Listener speakers(session, "Speakers");
  ASSERT_TRUE(speakers.waitForTone(kTone, kToleranceDB));
  TapHolder holder(session, 0.5F);
  EXPECT_EQ(holder.status(), 1);
  EXPECT_EQ(holder.held(), 0);
  EXPECT_TRUE(speakers.waitForTone(kTone, kToleranceDB));
  EXPECT_FALSE(holdsAnythingOfOurs(session.graph()));

  AccessManager(session).let(AccessTo::everything, PW_PERM_ALL);
  EXPECT_TRUE(waitUntil([&] { return holder.status() == 0; }, 2s));
  EXPECT_EQ(holder.take(), 1);
  EXPECT_TRUE(speakers.waitForTone(scaled(kTone, 0.5), kToleranceDB));
  EXPECT_EQ(holder.finish(), 0);
  EXPECT_TRUE(speakers.waitForTone(kTone, kToleranceDB));
}

TEST(Rights, RejectingServerDenies) {
  const PrivateSession session(withAccess("rejected"));
  TapHolder holder(session, 0.5F);
  EXPECT_TRUE(waitUntil([&] { return holder.status() == 1; }));
  EXPECT_EQ(holder.finish(), 0);
}

TEST(Rights, ServerThatDecidesNothingDenies) {
  PrivateSession session(withAccess("restricted"));
  session.kill(Daemon::wireplumber); // it decides
  TapHolder holder(session, 0.5F);
  EXPECT_NE(holder.status(), 0);
  EXPECT_TRUE(waitUntil([&] { return holder.status() == 1; }));
}

TEST(Rights, LostServerTakesNone) {
  PrivateSession session;
  ControlledSound sound(session);
  EXPECT_EQ(sound.server().rights(), AudioServer::Rights::granted);
  EXPECT_EQ(sound.server().connection(), AudioServer::Connection::connected);
  session.kill(Daemon::pipewire);
  EXPECT_TRUE(waitUntil([&] { return sound.server().connection() == AudioServer::Connection::lost; }));
  EXPECT_EQ(sound.server().rights(), AudioServer::Rights::granted);
  session.restart(Daemon::pipewire);
  EXPECT_TRUE(waitUntil([&] { return sound.server().connection() == AudioServer::Connection::connected; }));
}

TEST_P(Withdrawn, LeavesEachAtItsOwnOutputAndIsOverWhenRightsAreGivenAgain) {
  Controlled controlled;
  desktop::ConsentLibrary consent(controlled.sound.server());
  AudioPermission permission(consent);
  controlled.take();
  ASSERT_TRUE(controlled.isHeard(0.25, 5s));
  ASSERT_EQ(permission.status(), AudioCaptureStatus::authorized);

  controlled.manager.let(GetParam().what, GetParam().mask);
  EXPECT_TRUE(waitUntil([&] { return permission.status() == AudioCaptureStatus::denied; }, 2s));
  const auto deniedAt = std::chrono::steady_clock::now();
  const auto results = controlled.sound.with(&HardwareController::teardownAll);
  EXPECT_EQ(results.size(), 4U);
  EXPECT_TRUE(std::ranges::all_of(results, &HardwareTeardownResult::restored));
  EXPECT_TRUE(controlled.isHeard(1.0, 6s));
  EXPECT_TRUE(
      controlled.session.waitForGraph([](const Graph& graph) { return !holdsAnythingOfOurs(graph); }));

  // The server lets everyone in who comes anew, but who looks every five seconds has seen it.
  EXPECT_TRUE(waitUntil([&] { return permission.status() == AudioCaptureStatus::authorized; }, 8s));
  EXPECT_GT(std::chrono::steady_clock::now() - deniedAt, 5s);
  controlled.take();
  EXPECT_TRUE(controlled.isHeard(0.25, 5s));
}

INSTANTIATE_TEST_SUITE_P(Rights, Withdrawn,
                         testing::Values(Withdrawal{"TheServer", AccessTo::server, 0},
                                         Withdrawal{"AllButLooking", AccessTo::everything, kLookOnly},
                                         Withdrawal{"TheMetadata", AccessTo::metadata, kLookOnly}),
                         [](const auto& instance) { return instance.param.name; });

TEST(Rights, WithdrawnFromWhomTearsNothingDownAreTakenUpAgain) {
  Controlled controlled;
  controlled.take();
  ASSERT_TRUE(controlled.isHeard(0.25, 5s));
  controlled.manager.let(AccessTo::everything, kLookOnly);
  EXPECT_TRUE(controlled.isHeard(1.0, 6s));
  EXPECT_TRUE(controlled.isHeard(0.25, 10s));
}

} // namespace sonvel::sound
