#include "pipewire/fake_server.h"

#include <gmock/gmock.h>

namespace sonvel::pipewire {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

namespace {

constexpr std::int32_t kPlayer = 500;
constexpr std::int32_t kOther = 600;
const std::string kSpeakers = FakeServer::kSpeakers;
const std::string kHeadphones = FakeServer::kHeadphones;
const std::string kThroughSpeakers = "tap:" + kSpeakers;
const std::string kThroughHeadphones = "tap:" + kHeadphones;

/// A player and another program, both heard at the speakers.
class ReconcilerTest : public testing::Test {
 protected:
  ReconcilerTest() { EXPECT_TRUE(server_.settle()); }

  void TearDown() override { EXPECT_THAT(server_.faults, IsEmpty()); }

  /// A tap on the player that is read and played to the headphones.
  void start(bool isMuted = true) {
    tap_ = server_.wantTap(kPlayer, isMuted);
    session_ = server_.wantSession(tap_, kHeadphones);
    ASSERT_TRUE(server_.settle());
  }

  void stop() {
    server_.session(session_).isStopping = true;
    ASSERT_TRUE(server_.settle());
  }

  /// Lets everything happen; after each step the player must be heard at one place, the other where it was.
  void settleWithoutAGap() {
    do {
      ASSERT_THAT(server_.heardAt(stream_), SizeIs(1));
      ASSERT_THAT(server_.heardAt(other_), ElementsAre(kSpeakers));
    } while (server_.advance());
    ASSERT_TRUE(server_.settle());
  }

  FakeServer server_;
  GlobalID stream_ = server_.addStream(kPlayer);
  GlobalID other_ = server_.addStream(kOther);
  AudioObjectID tap_ = 0;
  IOProcID session_ = 0;
};

} // namespace

TEST_F(ReconcilerTest, TakesOverChangesDeviceAndGivesBackWithoutAGap) {
  tap_ = server_.wantTap(kPlayer);
  session_ = server_.wantSession(tap_, kHeadphones);
  settleWithoutAGap();
  EXPECT_THAT(server_.heardAt(stream_), ElementsAre(kThroughHeadphones));

  // A configuration: the new one is ready while the old one plays, then all changes at once.
  const AudioObjectID newTap = server_.wantTap(kPlayer);
  const IOProcID newSession = server_.wantSession(newTap, kSpeakers, true);
  settleWithoutAGap();
  EXPECT_THAT(server_.heardAt(stream_), ElementsAre(kThroughHeadphones));
  EXPECT_TRUE(server_.reconciler.isConnected(newSession));
  server_.session(newSession).isHeld = false;
  server_.session(session_).isStopping = true;
  server_.reconciler.desired().taps.at(tap_).isLeaving = true;
  while (server_.advance())
    ASSERT_THAT(server_.heardAt(stream_), testing::Not(testing::Contains(kSpeakers)));
  ASSERT_TRUE(server_.settle());
  EXPECT_THAT(server_.heardAt(stream_), ElementsAre(kThroughSpeakers));
  EXPECT_EQ(server_.countOwnNodes(), 2U);

  session_ = newSession;
  server_.session(session_).isStopping = true;
  settleWithoutAGap();
  EXPECT_THAT(server_.heardAt(stream_), ElementsAre(kSpeakers));
  EXPECT_EQ(server_.countOwnNodes(), 0U);
  EXPECT_THAT(server_.graph.metadata[stream_], IsEmpty());
}

TEST_F(ReconcilerTest, AReplacementWhoseDeviceIsNotReadyIsSilentAndNotLoud) {
  start();
  const AudioObjectID newTap = server_.wantTap(kPlayer);
  const IOProcID newSession = server_.wantSession(newTap, "a device that opens late");
  server_.session(session_).isStopping = true;
  ASSERT_TRUE(server_.settle());
  EXPECT_THAT(server_.heardAt(stream_), IsEmpty());
  EXPECT_FALSE(server_.reconciler.hasFilter(session_));
  EXPECT_TRUE(server_.reconciler.hasFilter(newSession));
  server_.addSink("a device that opens late");
  ASSERT_TRUE(server_.settle());
  EXPECT_THAT(server_.heardAt(stream_), ElementsAre("tap:a device that opens late"));
}

TEST_F(ReconcilerTest, NewStreamsJoinAsSoonAsTheirProcessIsKnown) {
  start();
  const GlobalID second = server_.addStream(700);
  Client& client = server_.graph.clients.at(*server_.graph.nodes.at(second).client);
  client.facts.processID = kPlayer;
  client.isKnown = false;
  server_.reconciler.reconcile();
  EXPECT_THAT(server_.graph.metadata[second], IsEmpty());
  client.isKnown = true;
  server_.reconciler.reconcile();
  EXPECT_EQ(targetTapOf(server_.graph, second),
            server_.tapName(tap_)); // before it is linked for the first time
  ASSERT_TRUE(server_.settle());
  EXPECT_THAT(server_.heardAt(second), ElementsAre(kThroughHeadphones));
}

TEST_F(ReconcilerTest, AMovedStreamStaysInItsTapAndTheMoveIsRemembered) {
  start();
  for (const std::string& target : {kSpeakers, std::string("-1"), kHeadphones}) {
    SCOPED_TRACE(target);
    server_.moveStream(stream_, target);
    ASSERT_TRUE(server_.settle());
    EXPECT_THAT(server_.heardAt(stream_), ElementsAre(kThroughHeadphones));
    EXPECT_EQ(chosenNodeOf(server_.graph, stream_), server_.graph.nodeNamed(target));
    const int writes = server_.writes;
    server_.reconciler.reconcile();
    EXPECT_EQ(server_.writes, writes);
  }
  stop();
  EXPECT_THAT(server_.heardAt(stream_), ElementsAre(kHeadphones));
  EXPECT_THAT(server_.graph.metadata[stream_], SizeIs(1));
}

TEST_F(ReconcilerTest, GivesUpAStreamThatAnotherProgramTakesBackEachTime) {
  start();
  for (int i = 0; i < 30 && !server_.reconciler.isPartial(tap_); ++i) {
    server_.moveStream(stream_, kSpeakers);
    while (server_.advance()) {
    }
  }
  EXPECT_TRUE(server_.reconciler.isPartial(tap_));
  ASSERT_TRUE(server_.settle());
  EXPECT_THAT(server_.heardAt(stream_), ElementsAre(kSpeakers));
}

TEST_F(ReconcilerTest, WhatCannotBeMovedIsLeftAloneAndNotWaitedFor) {
  const GlobalID fixed = server_.addStream(kPlayer, true);
  start();
  EXPECT_TRUE(server_.reconciler.isConnected(session_));
  EXPECT_TRUE(server_.reconciler.isPartial(tap_));
  EXPECT_THAT(server_.heardAt(stream_), ElementsAre(kThroughHeadphones));
  EXPECT_THAT(server_.heardAt(fixed), ElementsAre(kSpeakers));
  EXPECT_THAT(server_.graph.metadata[fixed], IsEmpty());
  server_.removeNode(fixed);
  EXPECT_FALSE(server_.reconciler.isPartial(tap_));
}

TEST_F(ReconcilerTest, LeavesLinksMadeByHandAndCutsTheSessionManagersPastTheTap) {
  start();
  const GlobalID recorder = server_.addForeignNode("recorder");
  server_.addLinkByHand(stream_, recorder);
  const GlobalID byHand = server_.addLinkByHand(stream_, server_.idOf(kSpeakers));
  const GlobalID past = server_.addLinkByHand(stream_, server_.idOf(kSpeakers));
  server_.graph.links.at(past).client = 20; // the session manager
  ASSERT_TRUE(server_.settle());
  EXPECT_TRUE(server_.graph.links.contains(byHand));
  EXPECT_FALSE(server_.graph.links.contains(past));
  EXPECT_TRUE(server_.graph.feeds(stream_, recorder));
}

TEST_F(ReconcilerTest, SweepsKilledRunsAndStrangersAndLeavesLiveRunsAlone) {
  start();
  const std::string killed = std::string(kTapNamePrefix) + "of-a-killed-run";
  const std::string live = std::string(kTapNamePrefix) + "of-a-live-run";
  server_.graph.metadata[other_] = {{"target.object", {"Spa:String", killed}},
                                    {"sonvel.target.object", {"Spa:String", kHeadphones}}};
  ASSERT_TRUE(server_.settle());
  EXPECT_EQ(server_.graph.metadata[other_],
            (MetadataEntries{{"target.object", {"Spa:String", kHeadphones}}}));
  server_.moveStream(other_, server_.tapName(tap_)); // a stranger in our tap
  ASSERT_TRUE(server_.settle());
  EXPECT_THAT(server_.heardAt(other_), ElementsAre(kSpeakers));
  const GlobalID liveTap = server_.addForeignNode(live);
  server_.moveStream(other_, live);
  ASSERT_TRUE(server_.settle());
  EXPECT_TRUE(server_.graph.feeds(other_, liveTap));
}

TEST_F(ReconcilerTest, DeviceThatGoesIsJoinedAgainAndStopsWhileItIsAway) {
  start();
  server_.removeNode(server_.idOf(kHeadphones));
  ASSERT_TRUE(server_.settle());
  EXPECT_THAT(server_.heardAt(stream_), IsEmpty()); // it waits in its tap
  server_.addSink(kHeadphones);
  ASSERT_TRUE(server_.settle());
  EXPECT_THAT(server_.heardAt(stream_), ElementsAre(kThroughHeadphones));
  const GlobalID newer = server_.addSink(kHeadphones); // one name in two nodes while one replaces the other
  ASSERT_TRUE(server_.settle());
  EXPECT_THAT(server_.channelsLinked(server_.idOf(server_.session(session_).filterName), newer),
              ElementsAre("FL>FL", "FR>FR"));
  server_.removeNode(server_.idOf(kHeadphones));
  server_.removeNode(server_.idOf(kHeadphones));
  stop();
  EXPECT_THAT(server_.heardAt(stream_), ElementsAre(kSpeakers));
}

TEST_F(ReconcilerTest, LinksThatOutliveUsAreMadeAfterARestartOfAManagerThatLinksNoMore) {
  start();
  server_.removeNode(server_.idOf(kHeadphones)); // nobody plays it, which is no reason
  ASSERT_TRUE(server_.settle());
  stop();
  for (const auto& [id, link] : Graph(server_.graph).links)
    if (link.outputNode == stream_) server_.graph.links.erase(id); // its user unlinks it
  ASSERT_TRUE(server_.settle());
  EXPECT_THAT(server_.heardAt(stream_), IsEmpty());

  server_.addSink(kHeadphones);
  start();
  server_.stopSessionManager();
  ASSERT_TRUE(server_.settle());
  server_.startSessionManager(false);
  ASSERT_TRUE(server_.settle());
  EXPECT_THAT(server_.heardAt(stream_), ElementsAre(kThroughHeadphones));
  EXPECT_THAT(server_.heardAt(other_), IsEmpty()); // we have never touched it
  stop();
  EXPECT_THAT(server_.heardAt(stream_), ElementsAre(kSpeakers));
}

TEST_F(ReconcilerTest, AnUnmutedTapIsReadFromItsStreamsWhereTheyAre) {
  start(false);
  const GlobalID filter = server_.idOf(server_.session(session_).filterName);
  EXPECT_THAT(server_.channelsLinked(stream_, filter), ElementsAre("FL>FL", "FR>FR"));
  EXPECT_THAT(server_.heardAt(stream_), ElementsAre(kSpeakers));
  EXPECT_FALSE(server_.graph.feeds(other_, filter));
  EXPECT_EQ(server_.writes, 0);
  EXPECT_EQ(server_.countOwnNodes(), 1U);
}

TEST_F(ReconcilerTest, LinksSuitTheChannelsOfTheDevice) {
  struct Case {
    Channels device;
    std::set<std::string> intoDevice;
    std::set<std::string> intoFilter;
  };

  const std::set<std::string> stereo{"FL>FL", "FR>FR"};
  const std::vector<Case> cases{
      {kStereoChannels, stereo, stereo},
      {{"FR", "FL"}, stereo, stereo},
      {{"MONO"}, {"FL>MONO"}, {"MONO>FL", "MONO>FR"}}, // mixed down by the server, so played once
      {{"FL", "FR", "FC", "LFE", "RL", "RR"}, stereo, stereo},
      {{"AUX0", "AUX1", "AUX2", "AUX3"}, {"FL>AUX0", "FR>AUX1"}, stereo},
  };
  for (const auto& [device, intoDevice, intoFilter] : cases) {
    SCOPED_TRACE(testing::PrintToString(device));
    const GlobalID sink = server_.addSink("device", device);
    const AudioObjectID tap = server_.wantTap(kPlayer);
    session_ = server_.wantSession(tap, "device");
    ASSERT_TRUE(server_.settle());
    const GlobalID filter = server_.idOf(server_.session(session_).filterName);
    EXPECT_EQ(server_.channelsLinked(filter, sink), intoDevice);
    EXPECT_EQ(server_.channelsLinked(server_.idOf(server_.tapName(tap)), filter), intoFilter);
    stop();
    server_.removeNode(sink);
    ASSERT_TRUE(server_.settle());
  }
}

} // namespace sonvel::pipewire
