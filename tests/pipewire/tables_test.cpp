// The small functions of this folder, in tables.
#include "pipewire/cycle_gate.h"
#include "pipewire/device_volume.h"
#include "pipewire/graph_index.h"
#include "pipewire/permissions.h"
#include "pipewire/process_joining.h"

#include <gmock/gmock.h>
#include <pipewire/core.h>

namespace sonvel::pipewire {

using testing::ElementsAre;
using testing::FloatEq;
using testing::Optional;

TEST(CycleGate, OpensAfterTheEndOfACycleOrWhenThereAreNone) {
  const GraphAlarm::Time now{};
  CycleGate gate;
  EXPECT_FALSE(gate.isOpen(7, now));
  EXPECT_FALSE(gate.isOpen(7, now + std::chrono::milliseconds(99)));
  EXPECT_TRUE(gate.isOpen(7, now + std::chrono::milliseconds(100)));
  EXPECT_TRUE(gate.isOpen(8, now + std::chrono::milliseconds(1)));
  gate.reset();
  EXPECT_FALSE(gate.isOpen(8, now + std::chrono::milliseconds(2)));
}

TEST(DeviceVolume, IsTheCubeOfItsScalarAndKeepsTheBalance) {
  EXPECT_THAT(volumeScalar({0.125F, 1.0F}, 1), Optional(FloatEq(0.5F)));
  EXPECT_EQ(volumeScalar({0.125F, 1.0F}, 3), std::nullopt);
  EXPECT_THAT(volumeScalar({-0.125F}, 0), Optional(0.0F)); // an inverted phase has no volume
  EXPECT_THAT(volumeScalar({3.375F}, 0), Optional(1.0F));  // desktops allow more than 100 percent
  EXPECT_THAT(withVolumeScalar({1.0F, 0.5F}, 0, 0.5F), ElementsAre(FloatEq(0.125F), FloatEq(0.0625F)));
  EXPECT_THAT(withVolumeScalar({0.0F, 0.0F}, 0, 0.5F), ElementsAre(FloatEq(0.125F), FloatEq(0.125F)));
  EXPECT_THAT(withVolumeScalar({1.0F, 0.5F, 0.25F}, 2, 0.5F), ElementsAre(1.0F, FloatEq(0.125F), 0.25F));
}

TEST(DeviceVolume, IsThatOfTheCardsOutputWhereThereIsOne) {
  constexpr GlobalID kCard = 30;
  constexpr GlobalID kSink = 40;
  Graph graph;
  graph.nodes[kSink].channelVolumes = {1.0F, 1.0F};
  graph.nodes[kSink].card = kCard;
  graph.cards[kCard].routes = {{.index = 0, .profileDevice = 3, .channelVolumes = {0.3F}},
                               {.index = 1, .profileDevice = 4, .channelVolumes = {0.4F, 0.5F}},
                               {.index = 2, .profileDevice = 5, .channelVolumes = {}}};
  graph.nodes[kSink].cardProfileDevice = 4;
  EXPECT_THAT(deviceVolumes(graph, kSink), ElementsAre(0.4F, 0.5F));
  graph.nodes[kSink].cardProfileDevice = 5; // an output without a volume of its own
  EXPECT_THAT(deviceVolumes(graph, kSink), ElementsAre(1.0F, 1.0F));
}

TEST(Permissions, AllowTapsIfStreamsCanBeSeenAndSentSomewhere) {
  constexpr GlobalID kMetadata = 36;

  struct Case {
    const char* name;
    std::vector<pw_permission> list;
    bool allows;
  };

  const std::vector<Case> cases{
      {"all", {{PW_ID_ANY, PW_PERM_ALL}}, true},
      {"streams can't be sent anywhere", {{PW_ID_ANY, PW_PERM_RWX}}, false},
      {"new objects stay hidden", {{PW_ID_ANY, PW_PERM_ALL & ~PW_PERM_R}}, false},
      {"no writing", {{PW_ID_ANY, PW_PERM_ALL & ~PW_PERM_W}, {kMetadata, PW_PERM_RWX}}, true},
      {"nothing can be called", {{PW_ID_ANY, PW_PERM_ALL & ~PW_PERM_X}}, false},
      {"metadata is read only", {{PW_ID_ANY, PW_PERM_ALL}, {kMetadata, PW_PERM_R | PW_PERM_X}}, false},
  };
  for (const auto& [name, list, allows] : cases)
    EXPECT_EQ(allowTaps(permissionsFrom(list), kMetadata), allows) << name;
}

namespace {

Client clientOf(std::int32_t pid, const char* binary = nullptr, const char* sandbox = nullptr) {
  Client client;
  client.serial = 1000 + static_cast<std::uint64_t>(pid);
  client.facts.processID = pid;
  if (binary != nullptr) client.facts.processBinary = binary;
  if (sandbox != nullptr) client.facts.sandboxAppID = sandbox;
  client.isKnown = true;
  client.isPulseConnection = binary != nullptr;
  return client;
}

} // namespace

TEST(GraphIndex, OfNodesWithOneNameTheNewestCounts) {
  Graph graph; // while one node replaces another, both exist
  graph.nodes[40] = {.serial = 2, .name = "speakers"};
  graph.nodes[41] = {.serial = 3, .name = "speakers"};
  EXPECT_EQ(GraphIndex(graph).nodeNamed("speakers"), 41U);
}

TEST(ProcessKey, JoinsWhatIsOneProcessAndNothingElse) {
  Graph graph;
  graph.clients = {{1, clientOf(500)},
                   {2, clientOf(500)},
                   {3, clientOf(501)},
                   {4, clientOf(0)},
                   {5, clientOf(0)},
                   {6, clientOf(0, "player", "org.example.Player")},
                   {7, clientOf(0, "helper", "org.example.Player")},
                   {8, clientOf(0, "player", "org.example.Game")},
                   {9, clientOf(2, "player")}, // both claim the process ID that they have in their sandbox
                   {10, clientOf(2, "game")},
                   {11, clientOf(600)},
                   {12, clientOf(601)}};
  graph.clients[5].serial = 50;
  graph.clients[11].isSoundServer = true;
  graph.clients[12].isKnown = false;
  EXPECT_EQ(processKeyOf(graph, 1), processKeyOf(graph, 2));
  EXPECT_EQ(processKeyOf(graph, 6), processKeyOf(graph, 7));
  std::set<std::optional<ProcessKey>> keys;
  for (const GlobalID client : {1U, 3U, 4U, 5U, 6U, 8U, 9U, 10U})
    keys.insert(processKeyOf(graph, client));
  EXPECT_EQ(keys.size(), 8U);
  for (const GlobalID client : {11U, 12U, 13U})
    EXPECT_EQ(processKeyOf(graph, client), std::nullopt);
}

} // namespace sonvel::pipewire
