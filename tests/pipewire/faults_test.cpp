#include "pipewire/model_server.h"
#include "pipewire/stream_targets.h"

#include <gmock/gmock.h>

namespace sonvel::pipewire {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

namespace {

constexpr std::int32_t kPlayer = 500;
const std::string kSpeakers = ModelServer::kSpeakers;
const std::string kHeadphones = ModelServer::kHeadphones;

} // namespace

TEST(Fault, TwoRunningTapsOnOneProcessComeToRest) {
  ModelServer server;
  const GlobalID stream = server.addStream(kPlayer);
  server.wantSession({server.wantTap(kPlayer)}, kSpeakers);
  server.settle();
  server.wantSession({server.wantTap(kPlayer)}, kHeadphones);
  server.settle();
  EXPECT_THAT(server.heardAt(stream), SizeIs(1));
}

TEST(Fault, TakesOverAStreamWithTheTargetOfAKilledRunInOneStep) {
  ModelServer server;
  const GlobalID stream = server.addStream(kPlayer);
  const AudioObjectID tap = server.wantTap(kPlayer);
  server.wantSession({tap}, kSpeakers);
  server.settle();
  server.owned.captured.clear();
  server.moveStream(stream, std::string(kTapNamePrefix) + "of-a-killed-run");
  EXPECT_THAT(server.plan().routings, ElementsAre(StreamRouting{stream, server.tapName(tap)}));
}

TEST(Fault, OneOfTwoSessionsOnOneTapStops) {
  ModelServer server;
  const GlobalID stream = server.addStream(kPlayer);
  const AudioObjectID tap = server.wantTap(kPlayer);
  const IOProcID first = server.wantSession({tap}, kSpeakers);
  const IOProcID second = server.wantSession({tap}, kSpeakers);
  server.settle();
  server.wantStop(first);
  server.settle();
  EXPECT_FALSE(server.owned.filters.contains(first));
  EXPECT_TRUE(isSessionEngaged(server.graph, server.desired, server.owned, second));
  EXPECT_THAT(server.heardAt(stream), ElementsAre("tap:" + kSpeakers));
}

TEST(Fault, ATapThatIsDestroyedWhileItPlaysGivesItsStreamsBackFirst) {
  ModelServer server;
  const GlobalID stream = server.addStream(kPlayer);
  const AudioObjectID tap = server.wantTap(kPlayer);
  server.wantSession({tap}, kSpeakers);
  server.settle();
  server.dropTap(tap);
  const Plan plan = server.plan();
  EXPECT_THAT(plan.routings, ElementsAre(StreamRouting{stream, ""}));
  EXPECT_THAT(plan.tapNodesToDestroy, IsEmpty());
}

TEST(Fault, AStrangerThatTheSessionManagerPutOnATapIsSentBack) {
  ModelServer server;
  const GlobalID stranger = server.addStream(kPlayer + 1);
  const AudioObjectID tap = server.wantTap(kPlayer);
  server.wantSession({tap}, kSpeakers);
  server.settle();
  // From its memory, or as a property of the stream's own: there is no metadata then, or under another key.
  const GlobalID tapNode = server.graph.nodeNamed(server.tapName(tap)).value();
  server.graph.metadata[stranger]["target.node"] = {"Spa:Id", std::to_string(tapNode)};
  server.addForeignLink(stranger, server.tapName(tap));
  const Plan plan = server.plan();
  EXPECT_FALSE(plan.routings.empty() && plan.foreignLinksToCut.empty());
}

TEST(Fault, AStreamThatItsUserMovedKeepsNothingOfOurs) {
  ModelServer server;
  const GlobalID stream = server.addStream(kPlayer);
  server.moveStream(stream, kHeadphones);
  const IOProcID session = server.wantSession({server.wantTap(kPlayer)}, kSpeakers);
  server.settle();
  server.moveStream(stream, kSpeakers);
  server.wantStop(session);
  server.settle();
  EXPECT_THAT(server.graph.metadata[stream], SizeIs(1)); // the user's target alone
}

TEST(Fault, AnOldChoiceOfTheUserDoesNotComeBack) {
  Graph graph;
  // Moved to the headphones, taken into a tap, moved out by the user, then told to follow the default.
  graph.metadata[70] = {{"sonvel.target.object", {"Spa:String", kHeadphones}}};
  for (const bool isBack : {false, true})
    for (const auto& write : isBack ? writesBack(graph, 70) : writesInto(graph, 70, "sonvel-tap-1"))
      if (write.value)
        graph.metadata[70][write.key] = *write.value;
      else
        graph.metadata[70].erase(write.key);
  EXPECT_THAT(graph.metadata[70], IsEmpty());
}

} // namespace sonvel::pipewire
