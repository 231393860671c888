#include "pipewire/model_server.h"
#include "pipewire/stream_targets.h"

#include <gmock/gmock.h>

namespace sonvel::pipewire {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

namespace {

constexpr std::int32_t kPlayer = 500;
constexpr std::int32_t kOther = 600;
const std::string kSpeakers = ModelServer::kSpeakers;
const std::string kHeadphones = ModelServer::kHeadphones;
const std::string kThroughSpeakers = "tap:" + kSpeakers;
const std::string kThroughHeadphones = "tap:" + kHeadphones;

/// A player, another program, and a tap on the player that is read and played to the headphones.
class PlanEdits : public testing::Test {
 protected:
  void start() {
    server_.settle();
    tap_ = server_.wantTap(kPlayer);
    session_ = server_.wantSession({tap_}, kHeadphones);
    server_.settle();
  }

  bool isConnected() const {
    return isSessionConnected(server_.graph, server_.desired, server_.owned, session_);
  }

  bool isEngaged() const { return isSessionEngaged(server_.graph, server_.desired, server_.owned, session_); }

  ModelServer server_;
  GlobalID stream_ = server_.addStream(kPlayer);
  GlobalID other_ = server_.addStream(kOther);
  AudioObjectID tap_ = 0;
  IOProcID session_ = 0;
};

} // namespace

TEST_F(PlanEdits, StartsAndStopsWithoutAMomentOfSilence) {
  server_.settle();
  EXPECT_THAT(server_.heardAt(stream_), ElementsAre(kSpeakers));
  tap_ = server_.wantTap(kPlayer);
  session_ = server_.wantSession({tap_}, kHeadphones);
  const auto runHeard = [&] {
    for (bool isMissing = true, isMoving = true; isMissing || isMoving; isMoving = server_.advance()) {
      ASSERT_THAT(server_.heardAt(stream_), SizeIs(1));
      ASSERT_THAT(server_.heardAt(other_), ElementsAre(kSpeakers));
      ASSERT_EQ(isEngaged(), server_.heardAt(stream_).contains(kThroughHeadphones));
      isMissing = server_.reconcile();
      ASSERT_THAT(server_.plan().foreignLinksToCut, IsEmpty()) << "what the session manager will move";
    }
  };
  runHeard();
  EXPECT_THAT(server_.heardAt(stream_), ElementsAre(kThroughHeadphones));
  server_.wantStop(session_);
  runHeard();
  EXPECT_THAT(server_.heardAt(stream_), ElementsAre(kSpeakers));
  EXPECT_THAT(server_.owned.tapNodes, IsEmpty());
  EXPECT_THAT(server_.owned.filters, IsEmpty());
  EXPECT_THAT(server_.owned.links, IsEmpty());
  EXPECT_THAT(server_.graph.metadata[stream_], IsEmpty());
}

TEST_F(PlanEdits, TapWithoutASessionTakesNothing) {
  tap_ = server_.wantTap(kPlayer);
  server_.settle();
  EXPECT_TRUE(server_.owned.tapNodes.contains(tap_));
  EXPECT_THAT(server_.heardAt(stream_), ElementsAre(kSpeakers));
}

TEST_F(PlanEdits, ANewStreamOfATappedProcessJoinsIt) {
  start();
  const GlobalID second = server_.addStream(kPlayer);
  const Plan plan = server_.plan();
  EXPECT_THAT(plan.routings, ElementsAre(StreamRouting{second, server_.tapName(tap_)}));
  EXPECT_FALSE(isEngaged());
  server_.settle();
  EXPECT_TRUE(isEngaged());
  EXPECT_THAT(server_.heardAt(second), ElementsAre(kThroughHeadphones));
}

TEST_F(PlanEdits, AStreamOfAClientThatIsNotKnownYetWaits) {
  start();
  const GlobalID second = server_.addStream(700);
  Client& client = server_.graph.clients.at(*server_.graph.nodes.at(second).client);
  client.facts.processID = kPlayer;
  client.isKnown = false;
  EXPECT_EQ(server_.plan(), Plan{});
  client.isKnown = true;
  EXPECT_THAT(server_.plan().routings, SizeIs(1));
}

TEST_F(PlanEdits, AStreamThatItsUserMovedStaysThere) {
  start();
  server_.moveStream(stream_, kSpeakers);
  server_.settle();
  EXPECT_THAT(server_.heardAt(stream_), ElementsAre(kSpeakers));
  EXPECT_TRUE(isEngaged());
  server_.wantStop(session_);
  server_.settle();
  EXPECT_EQ(server_.graph.metadataOf(stream_, "target.object")->value, kSpeakers);
}

TEST_F(PlanEdits, AStreamInTheIDOfOneThatItsUserMovedIsNotTakenForIt) {
  start();
  server_.moveStream(stream_, kSpeakers);
  server_.settle();
  server_.removeNode(stream_);
  const GlobalID next = server_.addStream(kPlayer);
  ASSERT_EQ(next, stream_);
  server_.settle();
  EXPECT_THAT(server_.heardAt(next), ElementsAre(kThroughHeadphones));
}

TEST_F(PlanEdits, AStrangerWithATapAsTargetIsSentBack) {
  start();
  server_.moveStream(other_, server_.tapName(tap_));
  EXPECT_THAT(server_.plan().routings, ElementsAre(StreamRouting{other_, ""}));
  server_.settle();
  EXPECT_THAT(server_.heardAt(other_), ElementsAre(kSpeakers));
  EXPECT_THAT(server_.heardAt(stream_), ElementsAre(kThroughHeadphones));
}

TEST_F(PlanEdits, SweepsWhatAKilledRunLeft) {
  server_.graph.metadata[stream_] = {
      {"target.object", {"Spa:String", std::string(kTapNamePrefix) + "of-a-killed-run"}},
      {"sonvel.target.object", {"Spa:String", kHeadphones}}};
  server_.settle();
  EXPECT_THAT(server_.heardAt(stream_), ElementsAre(kHeadphones));
  EXPECT_THAT(server_.graph.metadata[stream_], SizeIs(1));
}

TEST_F(PlanEdits, LeavesTheTapOfAnotherLiveRunAlone) {
  const std::string name = std::string(kTapNamePrefix) + "of-another-run";
  server_.addForeignNode(name);
  server_.moveStream(stream_, name);
  server_.settle();
  EXPECT_EQ(server_.plan(), Plan{});
  EXPECT_EQ(targetTapOf(server_.graph, stream_), name);
  server_.removeNode(name); // it was killed
  EXPECT_THAT(server_.plan().routings, ElementsAre(StreamRouting{stream_, ""}));
}

TEST_F(PlanEdits, KeepsWhatItHasWhileTheDeviceIsAway) {
  start();
  server_.removeNode(kHeadphones);
  server_.settle();
  EXPECT_FALSE(isConnected());
  EXPECT_TRUE(server_.owned.tapNodes.contains(tap_));
  EXPECT_TRUE(server_.owned.filters.contains(session_));
  EXPECT_TRUE(streamFeeds(server_.graph, stream_, server_.tapName(tap_)));
  server_.addSink(kHeadphones);
  server_.settle();
  EXPECT_TRUE(isEngaged());
  EXPECT_THAT(server_.heardAt(stream_), ElementsAre(kThroughHeadphones));
}

TEST_F(PlanEdits, StopsWhileTheDeviceIsAway) {
  start();
  server_.removeNode(kHeadphones);
  server_.settle();
  server_.wantStop(session_);
  server_.settle();
  EXPECT_THAT(server_.owned.filters, IsEmpty());
  EXPECT_THAT(server_.heardAt(stream_), ElementsAre(kSpeakers));
}

TEST_F(PlanEdits, LinksTheNewerOfTwoDevicesOfOneName) {
  start();
  const GlobalID newer = server_.addSink(kHeadphones);
  server_.settle();
  const GlobalID filter = server_.graph.nodeNamed(server_.desired.sessions.at(session_).filterName).value();
  EXPECT_THAT(server_.channelsLinked(filter, newer), ElementsAre("FL>FL", "FR>FR"));
  EXPECT_THAT(server_.heardAt(stream_), ElementsAre(kThroughHeadphones));
}

TEST_F(PlanEdits, StreamsThatAskNotToBeMovedStayAndAreNotWaitedFor) {
  const GlobalID fixed = server_.addStream(kPlayer, kStereoChannels, true);
  start();
  EXPECT_TRUE(isEngaged());
  EXPECT_THAT(server_.heardAt(fixed), ElementsAre(kSpeakers));
  EXPECT_THAT(server_.graph.metadata[fixed], IsEmpty());
  server_.wantStop(session_);
  server_.settle();
  EXPECT_THAT(server_.owned.filters, IsEmpty());
}

TEST_F(PlanEdits, CutsALinkPastTheTapAndNoOther) {
  start();
  const GlobalID recorder = server_.addForeignNode("recorder");
  server_.addForeignLink(stream_, "recorder");
  const GlobalID past = server_.addForeignLink(stream_, kSpeakers);
  EXPECT_THAT(server_.plan().foreignLinksToCut, ElementsAre(past));
  server_.settle();
  EXPECT_THAT(server_.heardAt(stream_), ElementsAre(kThroughHeadphones));
  EXPECT_TRUE(server_.graph.feeds(stream_, recorder));
}

TEST_F(PlanEdits, MakesAgainWhatTheServerLost) {
  start();
  server_.loseTapNode(tap_);
  EXPECT_FALSE(isConnected());
  server_.settle();
  EXPECT_TRUE(isEngaged());
  server_.loseFilter(session_);
  EXPECT_FALSE(isConnected());
  server_.settle();
  EXPECT_TRUE(isEngaged());
  const auto links = server_.graph.links;
  for (const auto& [id, link] : links) {
    server_.removeLink(id);
    server_.settle();
    EXPECT_THAT(server_.heardAt(stream_), ElementsAre(kThroughHeadphones));
  }
}

TEST_F(PlanEdits, TellsTheNextSessionManagerEverything) {
  start();
  server_.stopSessionManager();
  const GlobalID late = server_.addStream(kPlayer);
  for (int turn = 0; turn < 20; ++turn) {
    server_.reconcile();
    server_.advance();
  }
  EXPECT_THAT(server_.heardAt(stream_), ElementsAre(kThroughHeadphones));
  server_.startSessionManager();
  server_.settle();
  EXPECT_THAT(server_.heardAt(stream_), ElementsAre(kThroughHeadphones));
  EXPECT_THAT(server_.heardAt(late), ElementsAre(kThroughHeadphones));
}

TEST_F(PlanEdits, StopsWithoutASessionManager) {
  start();
  server_.stopSessionManager();
  server_.wantStop(session_);
  server_.settle();
  EXPECT_THAT(server_.owned.tapNodes, IsEmpty());
  EXPECT_THAT(server_.owned.filters, IsEmpty());
  server_.startSessionManager();
  server_.settle();
  EXPECT_THAT(server_.heardAt(stream_), ElementsAre(kSpeakers));
}

TEST_F(PlanEdits, LinksStreamsThatTheSessionManagerLeavesAlone) {
  start();
  const auto unlink = [this](GlobalID stream) {
    const auto links = server_.graph.links;
    for (const auto& [id, link] : links)
      if (link.outputNode == stream) server_.removeLink(id);
  };
  const auto channels = [this](const std::vector<PortPair>& pairs, const std::string& receiver) {
    std::set<std::string> joined;
    for (const auto& [output, input] : pairs)
      if (server_.graph.ports.at(input).node == server_.graph.nodeNamed(receiver))
        joined.insert(server_.graph.ports.at(output).channel + ">" + server_.graph.ports.at(input).channel);
    return joined;
  };
  unlink(stream_);
  unlink(other_);
  EXPECT_THAT(server_.plan().strandedLinksToCreate, IsEmpty());
  EXPECT_THAT(server_.plan().lastingLinksToCreate, IsEmpty());
  for (const auto stream : {stream_, other_})
    server_.owned.stranded.insert(server_.graph.nodes.at(stream).serial);
  server_.graph.defaultSinkName = kSpeakers;
  const Plan plan = server_.plan();
  EXPECT_THAT(channels(plan.strandedLinksToCreate, server_.tapName(tap_)), ElementsAre("FL>FL", "FR>FR"));
  EXPECT_THAT(channels(plan.lastingLinksToCreate, kSpeakers), ElementsAre("FL>FL", "FR>FR"));
  for (const auto& pair : plan.strandedLinksToCreate)
    server_.owned.links[pair] = true;
  EXPECT_THAT(server_.plan().strandedLinksToCreate, IsEmpty());
  EXPECT_THAT(server_.plan().linksToDestroy, IsEmpty());
  server_.addForeignLink(other_, kHeadphones); // someone has linked it meanwhile
  EXPECT_THAT(server_.plan().lastingLinksToCreate, IsEmpty());
}

TEST_F(PlanEdits, StartsAgainOnANewServer) {
  start();
  server_.restart();
  server_.addSink(kHeadphones);
  const GlobalID again = server_.addStream(kPlayer);
  server_.settle();
  EXPECT_TRUE(isEngaged());
  EXPECT_THAT(server_.heardAt(again), ElementsAre(kThroughHeadphones));
}

TEST_F(PlanEdits, SessionWaitsForEachOfItsParts) {
  start();
  const Graph whole = server_.graph;
  const auto links = server_.owned.links;
  ASSERT_THAT(links, SizeIs(4));
  for (const auto& [pair, isReady] : links) {
    server_.owned.links[pair] = false; // there, but not negotiated
    EXPECT_FALSE(isConnected());
    server_.owned.links.erase(pair);
    EXPECT_FALSE(isConnected());
    server_.owned.links = links;
  }
  for (const auto& name : {kHeadphones, server_.tapName(tap_)}) {
    server_.graph.nodes.erase(server_.graph.nodeNamed(name).value());
    EXPECT_FALSE(isConnected()) << name;
    server_.graph = whole;
  }
  const GlobalID device = server_.graph.nodeNamed(kHeadphones).value();
  std::erase_if(server_.graph.ports, [device](const auto& port) { return port.second.node == device; });
  EXPECT_FALSE(isConnected()) << "a device that has no ports yet";
  server_.graph = whole;
  EXPECT_TRUE(isConnected());
  EXPECT_FALSE(isSessionConnected(server_.graph, server_.desired, server_.owned, session_ + 1));
}

TEST_F(PlanEdits, PausedStreamsAreNotWaitedFor) {
  start();
  const GlobalID second = server_.addStream(kPlayer);
  EXPECT_FALSE(isEngaged());
  server_.graph.nodes.at(second).isRunning = false;
  EXPECT_TRUE(isEngaged());
}

TEST_F(PlanEdits, AnUnmutedTapIsReadFromItsStreamsWhereTheyAre) {
  server_.settle();
  tap_ = server_.wantTap(kPlayer, false);
  session_ = server_.wantSession({tap_}, kHeadphones);
  const GlobalID mono = server_.addStream(kPlayer, kMonoChannels);
  server_.settle();
  EXPECT_TRUE(isEngaged());
  EXPECT_THAT(server_.owned.tapNodes, IsEmpty());
  EXPECT_THAT(server_.graph.metadata[stream_], IsEmpty());
  EXPECT_THAT(server_.heardAt(stream_), ElementsAre(kSpeakers));
  const GlobalID filter = server_.graph.nodeNamed(server_.desired.sessions.at(session_).filterName).value();
  EXPECT_THAT(server_.channelsLinked(stream_, filter), ElementsAre("FL>FL", "FR>FR"));
  EXPECT_THAT(server_.channelsLinked(mono, filter), ElementsAre("MONO>FL", "MONO>FR"));
  EXPECT_FALSE(server_.graph.feeds(other_, filter));
  server_.wantStop(session_);
  server_.settle();
  EXPECT_THAT(server_.owned.links, IsEmpty());
  EXPECT_THAT(server_.heardAt(stream_), ElementsAre(kSpeakers));
}

TEST_F(PlanEdits, TwoSessionsDoNotTouchEachOther) {
  start();
  const AudioObjectID otherTap = server_.wantTap(kOther);
  const IOProcID otherSession = server_.wantSession({otherTap}, kSpeakers);
  server_.settle();
  EXPECT_THAT(server_.heardAt(other_), ElementsAre(kThroughSpeakers));
  server_.wantStop(session_);
  server_.settle();
  EXPECT_THAT(server_.heardAt(stream_), ElementsAre(kSpeakers));
  EXPECT_THAT(server_.heardAt(other_), ElementsAre(kThroughSpeakers));
  EXPECT_TRUE(isSessionEngaged(server_.graph, server_.desired, server_.owned, otherSession));
}

TEST(PlanLinks, SuitTheChannelsOfTheDevice) {
  struct Case {
    Channels device;
    std::set<std::string> linked;
  };

  const std::vector<Case> cases{
      {kStereoChannels, {"FL>FL", "FR>FR"}},
      {{"FR", "FL"}, {"FL>FL", "FR>FR"}},
      {kMonoChannels, {"FL>MONO", "FR>MONO"}},
      {kSurroundChannels, {"FL>FL", "FR>FR"}},
      {{"AUX0", "AUX1", "AUX2", "AUX3"}, {"FL>AUX0", "FR>AUX1"}},
  };
  for (const auto& [device, linked] : cases) {
    SCOPED_TRACE(testing::PrintToString(device));
    ModelServer server;
    const GlobalID sink = server.addSink("device", device);
    const GlobalID stream = server.addStream(kPlayer);
    const IOProcID session = server.wantSession({server.wantTap(kPlayer)}, "device");
    server.settle();
    const auto filter = server.graph.nodeNamed(server.desired.sessions.at(session).filterName).value();
    EXPECT_EQ(server.channelsLinked(filter, sink), linked);
    EXPECT_THAT(server.heardAt(stream), ElementsAre("tap:device"));
  }
}

} // namespace sonvel::pipewire
