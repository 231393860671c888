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
const std::string kThroughHeadphones = "tap:" + kHeadphones;

/// A player and another program, both heard on the speakers.
class ReconcilerTest : public testing::Test {
 protected:
  ReconcilerTest() { EXPECT_TRUE(server_.settle()); }

  void TearDown() override { EXPECT_THAT(server_.faults, IsEmpty()); }

  /// A tap on the player, played to the headphones.
  void start() {
    tap_ = server_.wantTap(kPlayer);
    filter_ = server_.wantFilter(tap_, kHeadphones);
    ASSERT_TRUE(server_.settle());
  }

  /// Runs everything; after each step the player must be heard at one place and the other program where it
  /// was.
  void settleWithoutAGap() {
    do {
      ASSERT_THAT(server_.heardAt(stream_), SizeIs(1));
      ASSERT_THAT(server_.heardAt(other_), ElementsAre(kSpeakers));
    } while (server_.advance());
    ASSERT_TRUE(server_.settle());
  }

  /// The channel pairs of all links from one node to the other.
  std::set<std::string> channelsLinked(GlobalID outputNode, GlobalID inputNode) const {
    const Graph& graph = server_.graph;
    std::set<std::string> pairs;
    for (const auto& [id, link] : graph.links)
      if (link.outputNode == outputNode && link.inputNode == inputNode)
        pairs.insert(graph.ports.at(link.outputPort).channel + ">" + graph.ports.at(link.inputPort).channel);
    return pairs;
  }

  FakeServer server_;
  GlobalID stream_ = server_.addStream(kPlayer);
  GlobalID other_ = server_.addStream(kOther);
  AudioObjectID tap_ = 0;
  IOProcID filter_ = 0;
};

} // namespace

TEST_F(ReconcilerTest, TakesOverChangesDeviceAndGivesBackWithoutAGap) {
  tap_ = server_.wantTap(kPlayer);
  filter_ = server_.wantFilter(tap_, kHeadphones);
  settleWithoutAGap();
  EXPECT_THAT(server_.heardAt(stream_), ElementsAre(kThroughHeadphones));

  // A configuration: the new filter is ready while the old one plays, then everything changes at once.
  const AudioObjectID newTap = server_.wantTap(kPlayer);
  const IOProcID newFilter = server_.wantFilter(newTap, kSpeakers, true);
  settleWithoutAGap();
  EXPECT_THAT(server_.heardAt(stream_), ElementsAre(kThroughHeadphones));
  EXPECT_TRUE(server_.reconciler.isConnected(newFilter));
  server_.filter(newFilter).isHeld = false;
  server_.filter(filter_).isStopping = true;
  server_.reconciler.desired().taps.at(tap_).isLeaving = true;
  while (server_.advance())
    ASSERT_THAT(server_.heardAt(stream_), testing::Not(testing::Contains(kSpeakers)));
  ASSERT_TRUE(server_.settle());
  EXPECT_THAT(server_.heardAt(stream_), ElementsAre("tap:speakers"));
  EXPECT_EQ(server_.countOwnNodes(), 1U);

  filter_ = newFilter;
  server_.filter(filter_).isStopping = true;
  settleWithoutAGap();
  EXPECT_THAT(server_.heardAt(stream_), ElementsAre(kSpeakers));
  EXPECT_EQ(server_.countOwnNodes(), 0U);
  EXPECT_THAT(server_.graph.metadata[stream_], IsEmpty());
}

TEST_F(ReconcilerTest, OfTwoTapsTheNewerHasTheStream) {
  start();
  server_.wantFilter(server_.wantTap(kPlayer), kSpeakers);
  ASSERT_TRUE(server_.settle());
  EXPECT_THAT(server_.heardAt(stream_), ElementsAre("tap:speakers"));
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

TEST_F(ReconcilerTest, ABusySessionManagersStreamsAreControlledInTheEnd) {
  start();
  const AudioObjectID tap = server_.wantTap(kOther);
  const IOProcID filter = server_.wantFilter(tap, kHeadphones, true);
  ASSERT_TRUE(server_.settle());
  server_.setManagerBusy(true);
  server_.filter(filter).isHeld = false;
  while (!server_.reconciler.isPartial(tap) || !server_.graph.metadata[other_].empty())
    ASSERT_TRUE(server_.step());
  server_.setManagerBusy(false);
  ASSERT_TRUE(server_.settle());
  EXPECT_THAT(server_.heardAt(other_), ElementsAre(kThroughHeadphones)) << "tried again";
  EXPECT_FALSE(server_.reconciler.isPartial(tap));

  const GlobalID third = server_.addStream(700);
  ASSERT_TRUE(server_.settle());
  server_.setManagerBusy(true);
  server_.reconciler.desired().taps.at(server_.wantTap(700)).standsBy = true;
  server_.wantFilter(server_.wantTap(kPlayer), kSpeakers);
  ASSERT_TRUE(server_.settle());
  server_.setManagerBusy(false);
  ASSERT_TRUE(server_.settle());
  EXPECT_THAT(server_.heardAt(third), IsEmpty()) << "a node without ports can't be fed";
  EXPECT_THAT(server_.heardAt(stream_), ElementsAre("tap:speakers"));
}

TEST_F(ReconcilerTest, LeavesLinksMadeByHandAndCutsTheSessionManagersPastTheTap) {
  start();
  const GlobalID byHand = server_.addLinkByHand(stream_, server_.idOf(kSpeakers));
  const GlobalID past = server_.addLinkByHand(stream_, server_.idOf(kSpeakers), FakeServer::kSessionManager);
  ASSERT_TRUE(server_.settle());
  EXPECT_TRUE(server_.graph.links.contains(byHand));
  EXPECT_FALSE(server_.graph.links.contains(past));
  EXPECT_THAT(server_.heardAt(stream_), ElementsAre(kSpeakers, kThroughHeadphones));
  server_.addLinkByHand(stream_, server_.idOf(kHeadphones));
  ASSERT_TRUE(server_.settle());
  EXPECT_TRUE(server_.reconciler.isPartial(tap_));
  EXPECT_THAT(server_.heardAt(stream_), ElementsAre(kHeadphones, kSpeakers)) << "not twice at one device";
}

TEST_F(ReconcilerTest, LinksSuitTheChannelsAtBothEnds) {
  const Channels aux{"AUX0", "AUX1", "AUX2", "AUX3"};
  const std::set<std::string> stereo{"FL>FL", "FR>FR"};

  const struct {
    Channels stream; ///< the stream that is read; none: the player is in the tap
    Channels device;
    std::set<std::string> intoNode, intoDevice; ///< a muted tap's are the session manager's
  } cases[]{
      {{}, kStereoChannels, stereo, stereo},
      {{}, {"MONO"}, {"FL>MONO", "FR>MONO"}, {"MONO>MONO"}}, // mixed down by the server
      {{}, {"FL", "FR", "FC", "LFE", "RL", "RR"}, stereo, stereo},
      {{}, aux, stereo, {"FL>AUX0", "FR>AUX1"}},
      {kStereoChannels, {"MONO"}, stereo, {"FL>MONO"}},
      {{"FL", "FR", "RL"}, kStereoChannels, {"FL>FL", "FR>FR", "RL>FL", "RL>FR"}, stereo},
      {aux, kStereoChannels, {"AUX0>FL", "AUX1>FR", "AUX2>FL", "AUX3>FR"}, stereo},
  };

  std::int32_t pid = 700;
  for (const auto& [channels, device, intoNode, intoDevice] : cases) {
    SCOPED_TRACE(testing::PrintToString(channels) + " to " + testing::PrintToString(device));
    const bool isMuted = channels.empty();
    const std::string name = "device " + std::to_string(++pid);
    const GlobalID stream = server_.addStream(pid, isMuted ? kStereoChannels : channels);
    const GlobalID sink = server_.addSink(name, device);
    const AudioObjectID tap = server_.wantTap(pid, isMuted);
    filter_ = server_.wantFilter(tap, name);
    ASSERT_TRUE(server_.settle());
    const GlobalID node = server_.idOf(isMuted ? server_.tapName(tap) : server_.filter(filter_).nodeName);
    EXPECT_EQ(channelsLinked(stream, node), intoNode);
    EXPECT_EQ(channelsLinked(node, sink), intoDevice);
  }
}

} // namespace sonvel::pipewire
