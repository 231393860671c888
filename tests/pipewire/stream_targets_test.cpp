#include "pipewire/stream_targets.h"

#include <gtest/gtest.h>

namespace sonvel::pipewire {

namespace {

constexpr GlobalID kStream = 70;
constexpr GlobalID kHeadphones = 40;
const std::string kTap = "sonvel-tap-1";
const std::string kOtherTap = "sonvel-tap-2";
const MetadataValue kHeadphonesByID{"Spa:Id", std::to_string(kHeadphones)};
const MetadataValue kHeadphonesByName{"Spa:String", "headphones"};
const MetadataValue kNoTarget{"Spa:Id", "-1"};

/// The metadata of a stream with the memory of the session manager: it remembers the device that a target
/// names and forgets when one names no device; an equal value is no news to it.
class Metadata {
 public:
  explicit Metadata(MetadataEntries entries) {
    graph_.metadata[kStream] = std::move(entries);
    for (const auto& [key, value] : graph_.metadata[kStream])
      notice(key, value);
  }

  void write(const std::vector<MetadataWrite>& writes) {
    auto& entries = graph_.metadata[kStream];
    for (const auto& [key, value] : writes) {
      const auto old = entries.find(key);
      if (!value && old != entries.end()) entries.erase(old);
      if (!value || (old != entries.end() && old->second == *value)) continue;
      entries[key] = *value;
      notice(key, *value);
    }
  }

  const Graph& graph() const { return graph_; }

  MetadataEntries entries() const { return graph_.metadata.at(kStream); }

  const std::string& remembered() const { return remembered_; }

 private:
  void notice(const std::string& key, const MetadataValue& value) {
    if (key != "target.object" && key != "target.node") return;
    const bool isDevice = value == kHeadphonesByID || value == kHeadphonesByName;
    remembered_ = isDevice ? "headphones" : "";
  }

  Graph graph_;
  std::string remembered_;
};

struct UsersChoice {
  std::string name;
  MetadataEntries entries;
};

const std::vector<UsersChoice> kUsersChoices{
    {"none", {}},
    {"by a mixer of this desktop", {{"target.node", kHeadphonesByID}}},
    {"by a mixer that writes both", {{"target.node", kHeadphonesByID}, {"target.object", kHeadphonesByName}}},
    {"by name", {{"target.object", kHeadphonesByName}}},
    {"taken back", {{"target.node", kNoTarget}}},
    {"taken back by a mixer that writes both", {{"target.node", kNoTarget}, {"target.object", kNoTarget}}},
    {"of other things", {{"volume.note", {"", "loud"}}}},
};

} // namespace

TEST(StreamTargets, TapIsReadFromTheTargetAlone) {
  EXPECT_EQ(targetTapOf(Metadata({{"target.object", {"Spa:String", kTap}}}).graph(), kStream), kTap);
  EXPECT_EQ(targetTapOf(Metadata({{"target.object", kHeadphonesByName}}).graph(), kStream), "");
  EXPECT_EQ(targetTapOf(Metadata({{"target.node", {"Spa:String", kTap}}}).graph(), kStream), "");
  EXPECT_EQ(targetTapOf(Metadata({{"target.object", {"Spa:String", kTap}}}).graph(), kStream + 1), "");
}

TEST(StreamTargets, GoIntoATapByItsName) {
  for (const auto& [name, entries] : kUsersChoices) {
    SCOPED_TRACE(name);
    Metadata metadata(entries);
    metadata.write(writesInto(metadata.graph(), kStream, kTap));
    EXPECT_EQ(metadata.entries().at("target.object"), (MetadataValue{"Spa:String", kTap}));
    if (entries.contains("target.node")) {
      EXPECT_EQ(metadata.entries().at("target.node"), entries.at("target.node"));
      EXPECT_EQ(metadata.remembered(), Metadata(entries).remembered());
    }
  }
}

TEST(StreamTargets, ComeBackAsTheyWere) {
  for (const auto& [name, entries] : kUsersChoices) {
    SCOPED_TRACE(name);
    const Metadata before(entries);
    Metadata metadata(entries);
    metadata.write(writesInto(metadata.graph(), kStream, kTap));
    metadata.write(writesInto(metadata.graph(), kStream, kOtherTap)); // from tap to tap
    metadata.write(writesInto(metadata.graph(), kStream, kOtherTap)); // told again
    metadata.write(writesBack(metadata.graph(), kStream));
    EXPECT_EQ(metadata.entries(), before.entries());
    EXPECT_EQ(metadata.remembered(), before.remembered());
  }
}

TEST(StreamTargets, KeepANewChoiceOfTheUser) {
  Metadata metadata({{"target.object", {"Spa:String", "speakers"}}});
  metadata.write(writesInto(metadata.graph(), kStream, kTap));
  metadata.write({{"target.object", kHeadphonesByName}}); // the user
  metadata.write(writesInto(metadata.graph(), kStream, kOtherTap));
  metadata.write(writesBack(metadata.graph(), kStream));
  EXPECT_EQ(metadata.entries(), (MetadataEntries{{"target.object", kHeadphonesByName}}));
}

TEST(StreamTargets, UsersTargetIsFoundByNameSerialOrID) {
  constexpr GlobalID kSpeakers = 41;
  const MetadataValue tap{"Spa:String", kTap};
  const std::vector<std::pair<MetadataEntries, GlobalID>> cases{
      {{}, kSpeakers},
      {{{"target.object", kHeadphonesByName}}, kHeadphones},
      {{{"target.object", {"Spa:Id", "1040"}}}, kHeadphones},
      {{{"target.node", kHeadphonesByID}}, kHeadphones},
      {{{"target.node", kHeadphonesByID}, {"target.object", tap}}, kHeadphones},
      {{{"sonvel.target.object", kHeadphonesByName}, {"target.object", tap}}, kHeadphones},
      {{{"target.object", tap}}, kSpeakers},
      {{{"target.object", kNoTarget}, {"target.node", kNoTarget}}, kSpeakers},
      {{{"target.object", {"Spa:String", "a device that is away"}}}, kSpeakers},
  };
  for (const auto& [entries, target] : cases) {
    SCOPED_TRACE(testing::PrintToString(entries.size()) + " entries");
    Graph graph;
    graph.nodes[kHeadphones].name = "headphones";
    graph.nodes[kHeadphones].serial = 1040;
    graph.nodes[kSpeakers].name = "speakers";
    graph.nodes[kSpeakers].serial = 1041;
    graph.defaultSinkName = "speakers";
    graph.metadata[kStream] = entries;
    EXPECT_EQ(usersTargetOf(graph, kStream), target);
  }
  EXPECT_EQ(usersTargetOf({}, kStream), std::nullopt);
}

} // namespace sonvel::pipewire
