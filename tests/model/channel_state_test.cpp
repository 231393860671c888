#include "model/channel_state.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QMetaProperty>

namespace sonvel {
namespace {

AudioApp app(std::optional<std::string> parent) {
  return {.objectID = 9,
          .pid = 7,
          .bundleID = "com.example.player.helper",
          .name = "Player",
          .parentBundleID = std::move(parent)};
}

TEST(ChannelState, StartsAsARowThatPlays) {
  const ChannelState row(app("com.example.player"));
  EXPECT_EQ(row.stableKey(), "com.example.player");
  EXPECT_EQ(ChannelState(app(std::nullopt)).stableKey(), "com.example.player.helper");
  EXPECT_EQ(row.objectID(), 9U);
  EXPECT_EQ(std::tuple(row.gainPercent(), row.muted(), row.level(), row.active(), row.isPlaying()),
            std::tuple(100, false, 0.0F, false, true));
  EXPECT_EQ(std::tuple(row.outputUID(), row.lastError(), row.zeroStreak(), row.idleTicks()),
            std::tuple(std::nullopt, std::nullopt, 0, 0));
  const ChannelState chosen(app(std::nullopt), 40, true, "headset");
  EXPECT_EQ(std::tuple(chosen.gainPercent(), chosen.muted(), chosen.outputUID()),
            std::tuple(40, true, "headset"));
}

TEST(ChannelState, AnnouncesEveryWriteAlsoOfTheSameValue) {
  ChannelState row(app(std::nullopt));
  const std::map<std::string, std::function<void()>> writes{
      {"app", [&] { row.setApp(row.app()); }},
      {"gainPercent", [&] { row.setGainPercent(100); }},
      {"muted", [&] { row.setMuted(false); }},
      {"level", [&] { row.setLevel(0.0F); }},
      {"active", [&] { row.setActive(false); }},
      {"isPlaying", [&] { row.setPlaying(true); }},
      {"outputUID", [&] { row.setOutputUID(std::nullopt); }},
      {"lastError", [&] { row.setLastError(std::nullopt); }},
      {"zeroStreak", [&] { row.setZeroStreak(0); }},
      {"idleTicks", [&] { row.setIdleTicks(0); }},
  };
  std::vector<std::string> announced;
  QObject::connect(&row, &ChannelState::appChanged, [&] { announced.emplace_back("app"); });
  QObject::connect(&row, &ChannelState::gainPercentChanged, [&] { announced.emplace_back("gainPercent"); });
  QObject::connect(&row, &ChannelState::mutedChanged, [&] { announced.emplace_back("muted"); });
  QObject::connect(&row, &ChannelState::levelChanged, [&] { announced.emplace_back("level"); });
  QObject::connect(&row, &ChannelState::activeChanged, [&] { announced.emplace_back("active"); });
  QObject::connect(&row, &ChannelState::isPlayingChanged, [&] { announced.emplace_back("isPlaying"); });
  QObject::connect(&row, &ChannelState::outputUIDChanged, [&] { announced.emplace_back("outputUID"); });
  QObject::connect(&row, &ChannelState::lastErrorChanged, [&] { announced.emplace_back("lastError"); });
  QObject::connect(&row, &ChannelState::zeroStreakChanged, [&] { announced.emplace_back("zeroStreak"); });
  QObject::connect(&row, &ChannelState::idleTicksChanged, [&] { announced.emplace_back("idleTicks"); });

  for (const auto& [property, write] : writes) {
    announced.clear();
    write();
    write();
    EXPECT_THAT(announced, testing::ElementsAre(property, property));
    const int index = ChannelState::staticMetaObject.indexOfProperty(property.c_str());
    EXPECT_EQ(ChannelState::staticMetaObject.property(index).notifySignal().name(),
              QByteArray::fromStdString(property + "Changed"));
  }
}

TEST(ChannelState, ShowsViewsWhatIsAbsentAsUndefined) {
  ChannelState row(app(std::nullopt));
  EXPECT_FALSE(row.property("outputUID").isValid());
  EXPECT_FALSE(row.property("lastError").isValid());
  row.setOutputUID("headset");
  EXPECT_EQ(row.property("outputUID"), "headset");
  EXPECT_EQ(row.property("name"), "Player");
}

} // namespace
} // namespace sonvel
