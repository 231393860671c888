#include "session/graph.h"
#include "session/listener.h"
#include "session/tone_client.h"
#include "sound/controlled_sound.h"
#include "sound/tap_holder.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

namespace sonvel::sound {

namespace {

using namespace session;
using namespace std::chrono_literals;

constexpr double kToleranceDB = 0.05;
constexpr Tone kTone{.frequency = 1000, .amplitude = 0.3};
constexpr Tone kOtherTone{.frequency = 1700, .amplitude = 0.2};

Tone half(Tone tone) {
  return {.frequency = tone.frequency, .amplitude = tone.amplitude / 2};
}

StreamOptions musicStream(Tone tone) {
  return {.tone = tone, .properties = {{"media.role", "Music"}}};
}

enum class Keys { both, object, node };

bool isSentIntoATap(const Graph& graph, std::uint32_t stream) {
  return graph.metadataValue("default", stream, "target.object").starts_with("sonvel-tap");
}

/// A private session with a user who moves streams as mixers do, and a look into the session manager's
/// memory.
class Memory : public testing::Test {
 protected:
  /// Sends a stream to a sink.
  void move(std::uint32_t stream, const std::string& sink, Keys keys = Keys::both) {
    const Graph graph = session_.graph();
    const GraphObject* target = graph.node(sink);
    if (keys != Keys::object) write(stream, "target.node", "Spa:Id", std::to_string(target->id));
    if (keys != Keys::node)
      write(stream, "target.object", "Spa:Id", std::string(target->property("object.serial")));
  }

  /// Writes metadata on a stream; returns when it stands.
  void write(std::uint32_t stream, const std::string& key, const std::string& type,
             const std::string& value) {
    GraphConnection connection(session_.socketPath());
    const auto deadline = std::chrono::steady_clock::now() + 20s;
    static_cast<void>(connection.snapshot(deadline)); // finds the metadata
    connection.setMetadata("default", stream, key, type, value);
    EXPECT_TRUE(connection.waitFor(
        [&](const Graph& graph) { return graph.metadataValue("default", stream, key) == value; }, deadline));
  }

  /// The lines of targets that the session manager has written, after all that has happened so far.
  std::vector<std::string> rememberedTargets() {
    // It writes all it knows some time after each change; what is moved last tells that the rest is there.
    const std::string role = "Marker" + std::to_string(++markers_);
    ToneClient marker(session_);
    move(marker.open("marker", {.signal = Signal::silence, .properties = {{"media.role", role}}}),
         "Speakers");
    EXPECT_TRUE(waitUntil([&] { return session_.stateFile().find(role + ":target") != std::string::npos; }));
    std::vector<std::string> targets;
    std::istringstream lines(session_.stateFile());
    for (std::string line; std::getline(lines, line);)
      if (line.find(":target") != std::string::npos && line.find("Marker") == std::string::npos)
        targets.push_back(line);
    return targets;
  }

  PrivateSession session_;

 private:
  int markers_ = 0;
};

} // namespace

TEST_F(Memory, AnotherProgramOfTheSameRoleKeepsItsRouteAndLevel) {
  ToneClient client(session_);
  client.open("tapped", musicStream(kTone));
  ToneClient before(session_);
  before.open("before", musicStream(kOtherTone));
  const Listener speakers(session_, "Speakers");
  ControlledSound sound(session_);
  const auto app = sound.findApp(client.pid());
  ASSERT_TRUE(app);
  sound.add(*app, 0.5F);
  EXPECT_TRUE(speakers.waitForTone(half(kTone), kToleranceDB));
  EXPECT_TRUE(speakers.waitForTone(kOtherTone, kToleranceDB));
  before.stop();

  EXPECT_EQ(rememberedTargets(), std::vector<std::string>());
  ToneClient after(session_);
  after.open("after", musicStream(kOtherTone));
  EXPECT_TRUE(speakers.waitForTone(kOtherTone, kToleranceDB));
  EXPECT_TRUE(speakers.waitForTone(half(kTone), kToleranceDB));
}

TEST_F(Memory, RouteThatTheUserHadSetComesBackAndIsStillRemembered) {
  const Listener speakers(session_, "Speakers");
  const Listener headphones(session_, "Headphones");
  for (const auto keys : {Keys::both, Keys::node, Keys::object}) {
    SCOPED_TRACE(static_cast<int>(keys));
    ToneClient client(session_);
    const auto stream = client.open("tapped", {.tone = kTone, .properties = {{"media.role", "Game"}}});
    move(stream, "Headphones", keys);
    ASSERT_TRUE(headphones.waitForTone(kTone, kToleranceDB));
    const auto remembered = rememberedTargets();
    ASSERT_EQ(remembered.size(), 1U);
    ControlledSound sound(session_);
    const auto app = sound.findApp(client.pid());
    ASSERT_TRUE(app);
    sound.add(*app, 0.5F);
    EXPECT_TRUE(speakers.waitForTone(half(kTone), kToleranceDB));
    EXPECT_TRUE(headphones.waitForExactZeros(100ms));
    EXPECT_TRUE(sound.remove(*app));
    EXPECT_TRUE(headphones.waitForTone(kTone, kToleranceDB));
    EXPECT_TRUE(speakers.waitForExactZeros(100ms));
    EXPECT_EQ(rememberedTargets(), remembered);
  }
}

TEST_F(Memory, RouteThatWasRememberedStaysSoWhileAndAfterATap) {
  {
    ToneClient earlier(session_);
    move(earlier.open("earlier", musicStream(kTone)), "Headphones");
    ASSERT_EQ(rememberedTargets().size(), 1U);
  }
  const Listener headphones(session_, "Headphones");
  const Listener speakers(session_, "Speakers");
  ToneClient client(session_);
  client.open("tapped", musicStream(kTone));
  ASSERT_TRUE(headphones.waitForTone(kTone, kToleranceDB));
  const auto remembered = rememberedTargets();
  ControlledSound sound(session_);
  const auto app = sound.findApp(client.pid());
  ASSERT_TRUE(app);
  sound.add(*app, 0.5F);
  EXPECT_TRUE(speakers.waitForTone(half(kTone), kToleranceDB));
  EXPECT_EQ(rememberedTargets(), remembered);
  EXPECT_TRUE(sound.remove(*app));
  EXPECT_TRUE(headphones.waitForTone(kTone, kToleranceDB));
  EXPECT_EQ(rememberedTargets(), remembered);
}

TEST_F(Memory, KilledRunLeavesRouteAndMemoryAsTheyWere) {
  ToneClient client(session_);
  move(client.open("tapped", musicStream(kTone)), "Headphones");
  const Listener headphones(session_, "Headphones");
  const Listener speakers(session_, "Speakers");
  ASSERT_TRUE(headphones.waitForTone(kTone, kToleranceDB));
  const auto remembered = rememberedTargets();
  TapHolder holder(session_, 0.5F);
  ASSERT_TRUE(speakers.waitForTone(half(kTone), kToleranceDB));
  holder.kill();
  EXPECT_TRUE(headphones.waitForTone(kTone, kToleranceDB));
  EXPECT_EQ(rememberedTargets(), remembered);

  ControlledSound sound(session_);
  EXPECT_TRUE(sound.findApp(client.pid()));
  EXPECT_TRUE(headphones.waitForTone(kTone, kToleranceDB));
  EXPECT_EQ(rememberedTargets(), remembered);
}

TEST_F(Memory, LeftoversOfAKilledRunAreSweptByTheNext) {
  // As after a kill that also hit the guardian: the stream's target is a tap that is gone.
  ToneClient client(session_);
  const auto stream = client.open("tapped", musicStream(kTone));
  move(stream, "Headphones");
  const Listener headphones(session_, "Headphones");
  ASSERT_TRUE(headphones.waitForTone(kTone, kToleranceDB));
  const std::string target = session_.graph().metadataValue("default", stream, "target.object");
  write(stream, "sonvel.target.object", "Spa:Id", target);
  write(stream, "target.object", "Spa:String", "sonvel-tap-1-2-3");
  const Listener speakers(session_, "Speakers");
  ASSERT_TRUE(speakers.waitForTone(kTone, kToleranceDB));

  ControlledSound sound(session_);
  EXPECT_TRUE(headphones.waitForTone(kTone, kToleranceDB));
  EXPECT_FALSE(holdsAnythingOfOurs(session_.graph()));
}

TEST_F(Memory, StreamThatTheUserMovesWhileItIsTappedIsHeardThereAfterwards) {
  ToneClient client(session_);
  const auto stream = client.open("tapped", musicStream(kTone));
  const Listener headphones(session_, "Headphones");
  ControlledSound sound(session_);
  const auto app = sound.findApp(client.pid());
  ASSERT_TRUE(app);
  sound.add(*app, 0.5F);
  move(stream, "Headphones");
  EXPECT_TRUE(waitUntil([&] { return isSentIntoATap(session_.graph(), stream); }));
  EXPECT_TRUE(sound.remove(*app));
  EXPECT_TRUE(headphones.waitForTone(kTone, kToleranceDB));
}

} // namespace sonvel::sound
