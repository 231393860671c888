#include "pipewire/stream_targets.h"

#include <gtest/gtest.h>

namespace sonvel::pipewire {

namespace {

constexpr GlobalID kStream = 70;
constexpr GlobalID kHeadphones = 40;
const std::string kTap = "sonvel-tap-1";
const std::string kOtherTap = "sonvel-tap-2";
const MetadataValue kHeadphonesByID{"Spa:Id", std::to_string(kHeadphones)};
const MetadataValue kHeadphonesBySerial{"Spa:Id", "1040"};
const MetadataValue kHeadphonesByName{"Spa:String", "headphones"};
const MetadataValue kNoTarget{"Spa:Id", "-1"};

/// The metadata of a stream with the memory of the session manager: it remembers the device whose ID or
/// serial a target is, and forgets with any other; an equal value is no news to it.
class Metadata {
 public:
  explicit Metadata(MetadataEntries entries) {
    graph_.nodes[kHeadphones].name = "headphones";
    graph_.nodes[kHeadphones].serial = 1040;
    graph_.metadata[kStream] = std::move(entries);
    for (const auto& [key, value] : graph_.metadata[kStream])
      notice(key, value);
  }

  void write(const std::vector<MetadataWrite>& writes) {
    auto& entries = graph_.metadata[kStream];
    for (const auto& [key, value] : writes) {
      const auto old = entries.find(key);
      if (!value && old != entries.end()) {
        entries.erase(old);
        notice(key, {});
      }
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
    const bool isDevice = key == "target.node" ? value == kHeadphonesByID : value == kHeadphonesBySerial;
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
    {"by a mixer that writes both",
     {{"target.node", kHeadphonesByID}, {"target.object", kHeadphonesBySerial}}},
    {"by the session manager's memory", {{"target.object", kHeadphonesBySerial}}},
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

TEST(StreamTargets, GoIntoATapByItsNameAndLeaveTheMemoryAsItWas) {
  for (const auto& [name, entries] : kUsersChoices) {
    SCOPED_TRACE(name);
    const Metadata before(entries);
    Metadata metadata(entries);
    metadata.write(writesInto(metadata.graph(), kStream, kTap));
    EXPECT_EQ(metadata.entries().at("target.object"), (MetadataValue{"Spa:String", kTap}));
    EXPECT_EQ(chosenNodeOf(metadata.graph(), kStream), chosenNodeOf(before.graph(), kStream));
    if (name != "by name") {
      EXPECT_EQ(metadata.remembered(), before.remembered());
    }

    metadata.write(writesInto(metadata.graph(), kStream, kOtherTap)); // from tap to tap
    metadata.write(writesInto(metadata.graph(), kStream, kOtherTap)); // told again
    metadata.write(writesBack(metadata.graph(), kStream));
    EXPECT_EQ(metadata.entries(), before.entries());
    EXPECT_EQ(metadata.remembered(), before.remembered());
  }
}

TEST(StreamTargets, KeepANewChoiceThatIsMadeWhileTheStreamIsTapped) {
  for (const auto& [before, old] : kUsersChoices)
    for (const auto& [after, chosen] : kUsersChoices) {
      SCOPED_TRACE(before + ", then " + after);
      // An entry that is equal to ours can't be seen.
      if (after == "of other things" || after == "by a mixer of this desktop") continue;
      Metadata metadata(old);
      metadata.write(writesInto(metadata.graph(), kStream, kTap));
      std::vector<MetadataWrite> writes; // as mixers write; "none" is the deletion of both
      for (const auto* const key : {"target.node", "target.object"})
        if (chosen.contains(key))
          writes.push_back({key, chosen.at(key)});
        else if (chosen.empty() || std::string(key) == "target.object")
          writes.push_back({key, std::nullopt});
      metadata.write(writes);
      if (targetTapOf(metadata.graph(), kStream).empty() || isChoiceOutdated(metadata.graph(), kStream))
        metadata.write(writesInto(metadata.graph(), kStream, kTap));
      EXPECT_EQ(targetTapOf(metadata.graph(), kStream), kTap);
      EXPECT_FALSE(isChoiceOutdated(metadata.graph(), kStream));
      EXPECT_EQ(chosenNodeOf(metadata.graph(), kStream), chosenNodeOf(Metadata(chosen).graph(), kStream));
      metadata.write(writesBack(metadata.graph(), kStream));
      EXPECT_EQ(chosenNodeOf(metadata.graph(), kStream), chosenNodeOf(Metadata(chosen).graph(), kStream));
      EXPECT_FALSE(hasLeftover(metadata.graph(), kStream));
    }
}

TEST(StreamTargets, UsersTargetIsFoundByNameSerialOrID) {
  constexpr GlobalID kSpeakers = 41;
  const MetadataValue tap{"Spa:String", kTap};
  const std::vector<std::pair<MetadataEntries, GlobalID>> cases{
      {{}, kSpeakers},
      {{{"target.object", kHeadphonesByName}}, kHeadphones},
      {{{"target.object", kHeadphonesBySerial}}, kHeadphones},
      {{{"target.node", kHeadphonesByID}}, kHeadphones},
      {{{"target.node", kHeadphonesByID}, {"target.object", tap}}, kHeadphones},
      {{{"sonvel.target.object", kHeadphonesByName}, {"target.object", tap}}, kHeadphones},
      {{{"target.object", tap}}, kSpeakers},
      {{{"target.object", kNoTarget}, {"target.node", kNoTarget}}, kSpeakers},
      {{{"target.object", {"Spa:String", "a device that is away"}}}, kSpeakers},
  };
  for (const auto& [entries, target] : cases) {
    SCOPED_TRACE(testing::PrintToString(entries.size()) + " entries");
    Graph graph = Metadata(entries).graph();
    graph.nodes[kSpeakers].name = "speakers";
    graph.nodes[kSpeakers].serial = 1041;
    graph.defaultSinkName = "speakers";
    EXPECT_EQ(usersTargetOf(graph, kStream), target);
  }
  EXPECT_EQ(usersTargetOf({}, kStream), std::nullopt);
}

} // namespace sonvel::pipewire
