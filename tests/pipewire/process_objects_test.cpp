#include "pipewire/object_table.h"
#include "pipewire/process_key.h"

#include <gtest/gtest.h>

namespace sonvel::pipewire {

namespace {

Client clientOf(std::int32_t pid) {
  Client client;
  client.facts.processID = pid;
  client.isKnown = true;
  return client;
}

} // namespace

TEST(ProcessKey, JoinsWhatIsOneProcessAndNothingElse) {
  Graph graph;
  graph.clients = {{1, clientOf(500)}, {2, clientOf(500)}, {3, clientOf(501)}, {4, clientOf(0)},
                   {5, clientOf(0)},   {6, clientOf(2)},   {7, clientOf(2)},   {8, clientOf(2)}};
  graph.clients[6].facts.sandboxAppID = "org.example.Player"; // whose processes count from 1 again
  graph.clients[7].facts.sandboxAppID = "org.example.Player";
  graph.clients[8].facts.sandboxAppID = "org.example.Game";
  EXPECT_EQ(processKeyOf(graph, 1), processKeyOf(graph, 2));
  EXPECT_EQ(processKeyOf(graph, 6), processKeyOf(graph, 7));
  graph.clients[4].serial = 40;
  graph.clients[5].serial = 50;
  std::set<std::optional<ProcessKey>> keys;
  for (const GlobalID client : {1U, 3U, 4U, 5U, 6U, 8U})
    keys.insert(processKeyOf(graph, client));
  EXPECT_EQ(keys.size(), 6U);
  EXPECT_FALSE(keys.contains(std::nullopt));
}

TEST(ProcessKey, NoneForTheServerNorForWhatIsNotKnown) {
  Graph graph;
  graph.clients = {{1, clientOf(500)}, {2, clientOf(501)}};
  graph.clients[1].isSoundServer = true;
  graph.clients[2].isKnown = false;
  for (const GlobalID client : {1U, 2U, 3U})
    EXPECT_EQ(processKeyOf(graph, client), std::nullopt);
}

TEST(ProcessKey, StreamsHaveThatOfTheirClient) {
  Graph graph;
  graph.clients = {{1, clientOf(500)}};
  Node stream;
  stream.kind = NodeKind::outputStream;
  EXPECT_EQ(processKeyOfStream(graph, stream), std::nullopt);
  stream.client = 1;
  EXPECT_EQ(processKeyOfStream(graph, stream), processKeyOf(graph, 1));
  stream.kind = NodeKind::sink;
  EXPECT_EQ(processKeyOfStream(graph, stream), std::nullopt);
}

TEST(ObjectTable, GivesEachNameOneIDThatNoOtherTableGives) {
  ObjectIDs ids;
  ObjectTable processes(ids);
  ObjectTable devices(ids);
  const AudioObjectID process = processes.idOf("process 500");
  const AudioObjectID device = devices.idOf("process 500"); // a device may be called anything
  EXPECT_NE(process, device);
  EXPECT_NE(ids.next(), processes.idOf("process 501"));
  EXPECT_EQ(processes.idOf("process 500"), process);
  EXPECT_EQ(processes.nameOf(process), "process 500");
  EXPECT_EQ(processes.nameOf(device), std::nullopt);
  EXPECT_EQ(processes.nameOf(kAudioObjectUnknown), std::nullopt);
}

} // namespace sonvel::pipewire
