#include "pipewire/metadata_mirror.h"
#include "pipewire/stream_targets.h"

#include <gtest/gtest.h>

namespace sonvel::pipewire {

namespace {

constexpr GlobalID kStream = 70;
constexpr GlobalID kServer = 0;
constexpr GlobalID kHeadset = 40;
const std::string kTap = "sonvel-tap-1";
const MetadataValue kHeadsetByID{"Spa:Id", std::to_string(kHeadset)};
const MetadataValue kHeadsetBySerial{"Spa:Id", "1040"};
const MetadataValue kNoTarget{"Spa:Id", "-1"};

Graph graphWith(MetadataEntries entries) {
  Graph graph;
  graph.nodes[kHeadset].name = "headset";
  graph.nodes[kHeadset].serial = 1040;
  graph.metadata[kStream] = std::move(entries);
  return graph;
}

std::optional<GlobalID> choice(const Graph& graph) {
  return chosenNodeOf(GraphIndex(graph), kStream);
}

void write(Graph& graph, const std::vector<MetadataWrite>& writes) {
  auto& entries = graph.metadata[kStream];
  for (const auto& [key, value] : writes)
    if (value)
      entries[key] = *value;
    else
      entries.erase(key);
}

const std::map<std::string, MetadataEntries> kUsersChoices{
    {"none", {}},
    {"by a mixer of this desktop", {{"target.node", kHeadsetByID}}},
    {"by a mixer that writes both", {{"target.node", kHeadsetByID}, {"target.object", kHeadsetBySerial}}},
    {"by the session manager's memory", {{"target.object", kHeadsetBySerial}}},
    {"taken back", {{"target.node", kNoTarget}}},
    {"taken back by a mixer that writes both", {{"target.node", kNoTarget}, {"target.object", kNoTarget}}},
    {"of other things", {{"volume.note", {"", "loud"}}}},
};

} // namespace

TEST(StreamTargets, GoIntoATapAndComeBackAsTheyWere) {
  for (const auto& [name, entries] : kUsersChoices) {
    SCOPED_TRACE(name);
    const Graph before = graphWith(entries);
    Graph graph = before;
    for (const std::string& tap : {kTap, std::string("sonvel-tap-2")}) {
      write(graph, writesInto(GraphIndex(graph), kStream, tap));
      EXPECT_EQ(targetTapOf(graph, kStream), tap);
      EXPECT_EQ(choice(graph), choice(before));
    }
    write(graph, writesBack(graph, kStream));
    EXPECT_EQ(graph.metadata, before.metadata);
  }
}

TEST(StreamTargets, KeepANewChoiceThatIsMadeWhileTheStreamIsTapped) {
  for (const auto& [before, old] : kUsersChoices)
    for (const auto& [after, chosen] : kUsersChoices) {
      SCOPED_TRACE(before + ", then " + after);
      // An entry that equals ours can't be distinguished.
      if (after == "of other things" || after == "by a mixer of this desktop") continue;
      Graph graph = graphWith(old);
      write(graph, writesInto(GraphIndex(graph), kStream, kTap));
      for (const auto* const key : {"target.node", "target.object"}) // mixers write both
        if (chosen.contains(key))
          graph.metadata[kStream][key] = chosen.at(key);
        else if (chosen.empty() || std::string(key) == "target.object")
          graph.metadata[kStream].erase(key);
      if (targetTapOf(graph, kStream).empty() || isChoiceOutdated(graph, kStream))
        write(graph, writesInto(GraphIndex(graph), kStream, kTap));
      EXPECT_EQ(targetTapOf(graph, kStream), kTap);
      EXPECT_FALSE(isChoiceOutdated(graph, kStream));
      EXPECT_EQ(choice(graph), choice(graphWith(chosen)));
      write(graph, writesBack(graph, kStream));
      EXPECT_EQ(choice(graph), choice(graphWith(chosen)));
      EXPECT_FALSE(hasLeftover(graph, kStream));
    }
}

TEST(MetadataMirror, WritesAChoiceAgainThatAWriteOfOursHasOvertaken) {
  for (const auto& choice : {MetadataWrite{"target.object", kNoTarget}, {"target.object", std::nullopt}}) {
    Graph graph = graphWith({{"target.object", kHeadsetBySerial}});
    graph.nodes[kStream].wasLinked = true;
    MetadataMirror mirror(graph);
    MetadataEntries server = graph.metadata[kStream];
    const auto arrive = [&](const std::vector<MetadataWrite>& writes) {
      for (const auto& [key, value] : writes) {
        const auto former = server.find(key);
        if (value ? former != server.end() && former->second == *value : former == server.end())
          continue; // no change is not reported
        server.erase(key);
        if (value) server[key] = *value;
        mirror.reported(kStream, key, value);
      }
    };
    const auto send = [&] {
      const auto writes = writesInto(GraphIndex(graph), kStream, kTap);
      for (const auto& write : writes)
        mirror.wrote(kStream, write);
      return writes;
    };
    const auto before = send();
    arrive({choice});
    EXPECT_TRUE(isChoiceOutdated(graph, kStream));
    const auto again = send();
    EXPECT_FALSE(isChoiceOutdated(graph, kStream));
    for (const auto& writes : {before, again}) {
      arrive(writes);
      EXPECT_EQ(chosenNodeOf(GraphIndex(graph), kStream), std::nullopt);
    }
    EXPECT_EQ(server, graph.metadata[kStream]);
    EXPECT_EQ(targetTapOf(graph, kStream), kTap);
    EXPECT_EQ(graph.nodes[kStream].choiceSerial, 1U);
  }
}

TEST(MetadataMirror, FindsWhatWasNotReportedWhenItIsReadAgain) {
  Graph graph = graphWith({});
  graph.nodes[kStream].wasLinked = true;
  graph.nodes[kStream].serial = 2000;
  MetadataMirror mirror(graph);
  const auto into = writesInto(GraphIndex(graph), kStream, kTap);
  for (const auto& write : into)
    mirror.wrote(kStream, write); // its answers are lost
  mirror.readingBegins();
  mirror.wrote(kServer, {"written", kNoTarget}); // while the server reads
  MetadataEntries server = graph.metadata[kStream];
  const auto moved = [&](const MetadataValue& device) {
    server["target.object"] = device;
    mirror.read({{kStream, server}, {kServer, {{"default.audio.sink", kNoTarget}}}});
    EXPECT_EQ(graph.metadata[kStream], server);
  };
  moved(kHeadsetBySerial); // of a stream as new as that, it is what the session manager restores
  EXPECT_EQ(graph.nodes[kStream].choiceSerial, 0U);
  EXPECT_EQ(graph.metadata[kServer].size(), 2U);
  for (const auto& write : into)
    mirror.wrote(kStream, write);
  mirror.readingBegins();
  moved(kHeadsetByID); // a choice
  EXPECT_EQ(graph.nodes[kStream].choiceSerial, 1U);
  EXPECT_EQ(graph.metadata[kServer].size(), 1U); // the other write is lost
}

} // namespace sonvel::pipewire
