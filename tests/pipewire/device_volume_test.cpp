#include "pipewire/device_volume.h"

#include <gmock/gmock.h>

namespace sonvel::pipewire {

using testing::ElementsAre;
using testing::FloatEq;
using testing::FloatNear;
using testing::IsEmpty;

TEST(DeviceVolume, ScalarIsTheCubeRootOfTheFactor) {
  const std::vector<std::pair<float, float>> scalarsAndFactors{
      {0.0F, 0.0F}, {0.1F, 0.001F}, {0.5F, 0.125F}, {1.0F, 1.0F}, {1.5F, 3.375F}};
  for (const auto& [scalar, factor] : scalarsAndFactors) {
    EXPECT_FLOAT_EQ(linearFromScalar(scalar), factor);
    EXPECT_FLOAT_EQ(scalarFromLinear(factor), scalar);
  }
  EXPECT_EQ(scalarFromLinear(-0.125F), 0.0F); // a phase that is turned round has no volume
}

TEST(DeviceVolume, OfAllChannelsIsThatOfTheLoudest) {
  const std::vector<float> volumes{0.125F, 1.0F};
  EXPECT_FLOAT_EQ(volumeScalar(volumes, 0).value(), 1.0F);
  EXPECT_FLOAT_EQ(volumeScalar(volumes, 1).value(), 0.5F);
  EXPECT_FLOAT_EQ(volumeScalar(volumes, 2).value(), 1.0F);
  EXPECT_EQ(volumeScalar(volumes, 3), std::nullopt);
  EXPECT_EQ(volumeScalar({0.5F}, 2), std::nullopt);
  EXPECT_EQ(volumeScalar({}, 0), std::nullopt);
}

TEST(DeviceVolume, SettingAllKeepsTheBalance) {
  const auto halved = withVolumeScalar({1.0F, 0.5F}, 0, 0.5F);
  EXPECT_THAT(halved, ElementsAre(FloatEq(0.125F), FloatEq(0.0625F)));
  EXPECT_THAT(withVolumeScalar(halved, 0, 1.0F), ElementsAre(FloatEq(1.0F), FloatEq(0.5F)));
  EXPECT_THAT(withVolumeScalar({0.0F, 0.2F}, 0, 1.0F), ElementsAre(FloatEq(0.0F), FloatEq(1.0F)));
}

TEST(DeviceVolume, ComesBackFromZeroOnAllChannels) {
  const auto silent = withVolumeScalar({1.0F, 0.5F}, 0, 0.0F);
  EXPECT_THAT(silent, ElementsAre(0.0F, 0.0F));
  EXPECT_THAT(withVolumeScalar(silent, 0, 0.5F), ElementsAre(FloatEq(0.125F), FloatEq(0.125F)));
}

TEST(DeviceVolume, SettingOneChannelLeavesTheOthers) {
  EXPECT_THAT(withVolumeScalar({1.0F, 0.5F, 0.25F}, 2, 0.2F),
              ElementsAre(1.0F, FloatNear(0.008F, 1e-7F), 0.25F));
}

TEST(DeviceVolume, IsThatOfTheCardsOutputWhereThereIsOne) {
  constexpr GlobalID kCard = 30;
  constexpr GlobalID kSink = 40;
  Graph graph;
  Node& sink = graph.nodes[kSink];
  EXPECT_THAT(deviceVolumes(graph, kSink), IsEmpty());
  sink.channelVolumes = {1.0F, 1.0F};
  sink.card = kCard;
  sink.cardProfileDevice = 4;
  EXPECT_THAT(deviceVolumes(graph, kSink), ElementsAre(1.0F, 1.0F)); // the card is not known yet
  graph.cards[kCard].routes = {{.index = 0, .profileDevice = 3, .channelVolumes = {0.3F}},
                               {.index = 1, .profileDevice = 4, .channelVolumes = {0.4F, 0.5F}},
                               {.index = 2, .profileDevice = 5, .channelVolumes = {}}};
  EXPECT_THAT(deviceVolumes(graph, kSink), ElementsAre(0.4F, 0.5F));
  sink.cardProfileDevice = 5; // an output without a volume of its own
  EXPECT_THAT(deviceVolumes(graph, kSink), ElementsAre(1.0F, 1.0F));
  sink.cardProfileDevice.reset();
  EXPECT_THAT(deviceVolumes(graph, kSink), ElementsAre(1.0F, 1.0F));
}

} // namespace sonvel::pipewire
