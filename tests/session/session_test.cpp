#include "session/analysis.h"
#include "session/listener.h"
#include "session/player.h"
#include "session/private_session.h"
#include "session/tone_client.h"

#include <gmock/gmock.h>

namespace sonvel::session {
namespace {

using namespace std::chrono_literals;

class SessionTest : public testing::Test {
 protected:
  PrivateSession session_;
};

class PlayerTest : public SessionTest, public testing::WithParamInterface<PlayerKind> {};

TEST_P(PlayerTest, IsHeardAtItsLevelAndThenNotAtAll) {
  const Listener speakers(session_, "Speakers");
  Player player(session_, GetParam(), {.frequency = 1000, .amplitude = 0.5});
  ASSERT_TRUE(speakers.waitForTone({.frequency = 1000, .amplitude = 0.5}, 0.001))
      << speakers.toneAmplitude(1000, 0) << " and " << speakers.toneAmplitude(1000, 1);
  player.stop();
  EXPECT_TRUE(speakers.waitForExactZeros(200ms));
}

INSTANTIATE_TEST_SUITE_P(Kinds, PlayerTest,
                         testing::Values(PlayerKind::pwPlay, PlayerKind::paplay, PlayerKind::ffplay));

} // namespace
} // namespace sonvel::session
