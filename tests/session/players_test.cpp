#include "session/analysis.h"
#include "session/eventually.h"
#include "session/listener.h"
#include "session/player.h"
#include "session/tone_client.h"

#include <gmock/gmock.h>

#include <csignal>
#include <fstream>

namespace sonvel::session {
namespace {

using namespace std::chrono_literals;
using testing::IsEmpty;

namespace fs = std::filesystem;

class PlayerTest : public testing::TestWithParam<PlayerKind> {
 protected:
  PrivateSession session_;
};

TEST_P(PlayerTest, IsHeardAtItsLevelAndThenNotAtAll) {
  const Listener speakers(session_, "Speakers");
  constexpr Tone kTone{.frequency = 1000, .amplitude = 0.5};
  Player player(session_, GetParam(), kTone);
  ASSERT_TRUE(speakers.waitForTone(kTone, 0.001))
      << speakers.toneAmplitude(1000, 0) << " and " << speakers.toneAmplitude(1000, 1);
  player.stop();
  EXPECT_TRUE(speakers.waitForExactZeros(200ms));
  EXPECT_EQ(speakers.losses(), 0U);
}

TEST_P(PlayerTest, TakesANameAndProperties) {
  const Listener headphones(session_, "Headphones");
  constexpr Tone kTone{.frequency = 700, .amplitude = 0.25};
  const Player player(session_, GetParam(), kTone,
                      {.properties = {{"media.role", "Communication"}, {"target.object", "Headphones"}},
                       .binaryName = "jukebox",
                       .environment = {{"SONVEL_MARK", "here"}}});
  EXPECT_TRUE(headphones.waitForTone(kTone, 0.001));
  const fs::path process = "/proc/" + std::to_string(player.pid());
  EXPECT_EQ(fs::read_symlink(process / "exe").filename(), "jukebox");
  std::ifstream environment(process / "environ");
  EXPECT_THAT(std::string(std::istreambuf_iterator<char>(environment), {}),
              testing::HasSubstr(std::string("SONVEL_MARK=here") + '\0'));
  EXPECT_TRUE(session_.waitForGraph([](const Graph& graph) {
    return std::ranges::any_of(graph.objects, [](const GraphObject& object) {
      return object.type == "Node" && object.property("media.role") == "Communication";
    });
  }));
}

INSTANTIATE_TEST_SUITE_P(Kinds, PlayerTest,
                         testing::Values(PlayerKind::pwPlay, PlayerKind::paplay, PlayerKind::ffplay));

TEST(Players, AreToldApart) {
  const PrivateSession session;
  const Listener speakers(session, "Speakers");
  constexpr std::array<Tone, 3> kTones = {{{.frequency = 500, .amplitude = 0.25},
                                           {.frequency = 1200, .amplitude = 0.05},
                                           {.frequency = 3000, .amplitude = 0.5}}};
  const Player first(session, PlayerKind::pwPlay, kTones[0]);
  const Player second(session, PlayerKind::paplay, kTones[1]);
  const Player third(session, PlayerKind::ffplay, kTones[2]);
  for (const Tone& tone : kTones)
    EXPECT_TRUE(speakers.waitForTone(tone, 0.002)) << speakers.toneAmplitude(tone.frequency);
  EXPECT_FALSE(speakers.waitForTone({.frequency = 500, .amplitude = 0.251}, 0.002, 1s));
}

class ToneClientTest : public testing::Test {
 protected:
  PrivateSession session_;
  Listener speakers_{session_, "Speakers"};
};

TEST_F(ToneClientTest, CountsWithoutAFault) {
  ToneClient client(session_);
  client.open("counter", {.signal = Signal::counter, .tone = {.amplitude = 0.7}});
  const std::uint64_t mark = speakers_.mark();
  ASSERT_TRUE(speakers_.waitForFrames(mark, 48000 * 2, 20s));
  const Recording heard = speakers_.since(mark);
  EXPECT_TRUE(heard.complete);
  EXPECT_GT(*std::ranges::max_element(heard.left), 0.69F);
  EXPECT_THAT(counterFaults(heard.left, 0.7), IsEmpty());
  EXPECT_THAT(counterFaults(heard.right, 0.7), IsEmpty());
}

TEST_F(ToneClientTest, PlaysImpulsesByTheClockOfTheGraph) {
  ToneClient client(session_);
  client.open("impulses", {.signal = Signal::impulses, .tone = {.amplitude = 0.9}, .period = 10000});
  const std::uint64_t mark = speakers_.mark();
  ASSERT_TRUE(speakers_.waitForFrames(mark, 48000 * 2, 20s));
  const Recording heard = speakers_.since(mark);
  const std::vector<std::size_t> impulses = impulsePositions(heard.left, 0.8F);
  ASSERT_GE(impulses.size(), 7U);
  // The monitor of a null sink is one quantum late, and nothing else delays.
  for (const std::size_t impulse : impulses)
    EXPECT_EQ((heard.position + impulse) % 10000, 1024U);
}

TEST_F(ToneClientTest, WorksEachStreamByItself) {
  ToneClient client(session_);
  const std::uint32_t low = client.open("low", {.tone = {.frequency = 400, .amplitude = 0.2}});
  const std::uint32_t high =
      client.open("high", {.tone = {.frequency = 4000, .amplitude = 0.3}, .corked = true});
  EXPECT_NE(low, high);
  EXPECT_TRUE(speakers_.waitForTone({.frequency = 400, .amplitude = 0.2}, 0.001));
  EXPECT_LT(speakers_.toneAmplitude(4000), 0.00001);

  client.uncork("high");
  client.setAmplitude("low", 0.1);
  EXPECT_TRUE(speakers_.waitForTone({.frequency = 4000, .amplitude = 0.3}, 0.001));
  EXPECT_TRUE(speakers_.waitForTone({.frequency = 400, .amplitude = 0.1}, 0.001));

  client.close("high");
  client.cork("low");
  EXPECT_TRUE(speakers_.waitForExactZeros(200ms));
  EXPECT_THROW(client.cork("high"), std::runtime_error);
  client.kill();
  EXPECT_THROW(client.uncork("low"), std::runtime_error);
}

TEST_F(ToneClientTest, PlaysFromAHelperProcess) {
  ToneClient client(session_,
                    {.binaryName = "browser", .helper = true, .properties = {{"application.name", "Web"}}});
  client.open("page");
  EXPECT_TRUE(speakers_.waitForTone({}, 0.001));
  EXPECT_NE(client.pid(), client.parentPid());
  const Graph graph = session_.graph();
  EXPECT_TRUE(std::ranges::any_of(graph.objects, [&](const GraphObject& object) {
    return object.type == "Client" && object.property("application.name") == "Web" &&
           object.property("pipewire.sec.pid") == std::to_string(client.pid());
  }));
  client.kill();
  EXPECT_TRUE(speakers_.waitForExactZeros(200ms));
}

TEST(Listener, TellsWhenTheSinkWasGone) {
  PrivateSession session;
  const Listener speakers(session, "Speakers");
  const std::uint64_t mark = speakers.mark();
  ASSERT_TRUE(speakers.waitForFrames(mark, 1, 20s));
  session.removeSink("Speakers");
  EXPECT_TRUE(eventually([&] { return !speakers.linked(); }));
  session.addSink("Speakers", "Speakers");
  ASSERT_TRUE(speakers.waitForFrames(speakers.mark(), 4096, 20s));
  EXPECT_TRUE(speakers.linked());
  EXPECT_EQ(speakers.losses(), 1U);
  EXPECT_FALSE(speakers.since(mark).complete);
  EXPECT_TRUE(speakers.since(speakers.mark() - 1024).complete);
}

TEST(Listener, LetsASinkSleepWhenPassive) {
  const PrivateSession session;
  const Listener speakers(session, "Speakers", Wake::passive);
  EXPECT_FALSE(speakers.waitForFrames(speakers.mark(), 1, 500ms));
  const Player player(session, PlayerKind::pwPlay, {});
  EXPECT_TRUE(speakers.waitForTone({}, 0.001));
}

} // namespace
} // namespace sonvel::session
