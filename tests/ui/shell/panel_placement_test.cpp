#include "ui/shell/panel_placement.h"

#include <gtest/gtest.h>

#include <ostream>
#include <string>

namespace sonvel::ui {

namespace {

constexpr QSize kPanel(360, 600);

const ScreenArea kBarOnTop{.geometry = {0, 0, 1920, 1080}, .available = {0, 32, 1920, 1048}};
const ScreenArea kBarBelow{.geometry = {0, 0, 1920, 1080}, .available = {0, 0, 1920, 1036}};
const ScreenArea kBarAtTheLeft{.geometry = {0, 0, 1920, 1080}, .available = {64, 0, 1856, 1080}};
// To the right of the others, lower, and scaled twice: its logical size leaves gaps around it.
const ScreenArea kScaled{.geometry = {1920, 200, 1280, 720}, .available = {1920, 200, 1280, 680}};
const ScreenArea kSmall{.geometry = {0, 0, 320, 480}, .available = {0, 20, 320, 460}};
// To the left of the origin.
const ScreenArea kLeft{.geometry = {-1280, 0, 1280, 1024}, .available = {-1280, 0, 1280, 1024}};

struct PlacementCase {
  std::string name;
  QList<ScreenArea> screens;
  QRect icon;
  QPoint pointer;
  QSize size;
  QRect expected;
};

void PrintTo(const PlacementCase& placement, std::ostream* out) {
  *out << placement.name;
}

class PanelPlacementTest : public ::testing::TestWithParam<PlacementCase> {};

TEST_P(PanelPlacementTest, isWhereItIsLookedFor) {
  const PlacementCase& placement = GetParam();
  EXPECT_EQ(panelGeometry(placement.screens, placement.icon, placement.pointer, placement.size),
            placement.expected);
}

INSTANTIATE_TEST_SUITE_P(
    , PanelPlacementTest,
    ::testing::Values(
        PlacementCase{"IconInATopBar", {kBarOnTop}, {1000, 4, 24, 24}, {}, kPanel, {832, 32, 360, 600}},
        PlacementCase{
            "IconNearTheRightEdge", {kBarOnTop}, {1890, 4, 24, 24}, {}, kPanel, {1560, 32, 360, 600}},
        PlacementCase{"IconNearTheLeftEdge", {kBarOnTop}, {2, 4, 24, 24}, {}, kPanel, {0, 32, 360, 600}},
        PlacementCase{"IconInABarBelow", {kBarBelow}, {1000, 1046, 24, 24}, {}, kPanel, {832, 436, 360, 600}},
        PlacementCase{
            "IconInABarAtTheLeft", {kBarAtTheLeft}, {20, 1040, 24, 24}, {}, kPanel, {64, 440, 360, 600}},
        PlacementCase{"IconAmongWindows", {kBarBelow}, {1000, 100, 24, 24}, {}, kPanel, {832, 124, 360, 600}},
        PlacementCase{"IconOnTheSecondScreen",
                      {kBarOnTop, kScaled},
                      {3000, 890, 24, 24},
                      {10, 10},
                      kPanel,
                      {2832, 280, 360, 600}},
        PlacementCase{"TopRight", {kBarOnTop}, {}, {1700, 10}, kPanel, {1560, 32, 360, 600}},
        PlacementCase{"TopLeft", {kBarOnTop}, {}, {100, 10}, kPanel, {0, 32, 360, 600}},
        PlacementCase{"BottomRight", {kBarBelow}, {}, {1700, 1070}, kPanel, {1560, 436, 360, 600}},
        PlacementCase{"BottomLeft", {kBarAtTheLeft}, {}, {30, 1070}, kPanel, {64, 480, 360, 600}},
        PlacementCase{"SecondScreen", {kBarOnTop, kScaled}, {}, {3100, 900}, kPanel, {2840, 280, 360, 600}},
        PlacementCase{
            "ScreenLeftOfTheOrigin", {kBarOnTop, kLeft}, {}, {-5, 1000}, kPanel, {-360, 424, 360, 600}},
        PlacementCase{"PointerInAGapBetweenScreens",
                      {kBarOnTop, kScaled},
                      {},
                      {3100, 150},
                      kPanel,
                      {2840, 200, 360, 600}},
        PlacementCase{"ScreenSmallerThanThePanel", {kSmall}, {}, {300, 400}, kPanel, {0, 20, 320, 460}},
        PlacementCase{
            "IconOnAScreenSmallerThanThePanel", {kSmall}, {280, 0, 20, 20}, {}, kPanel, {0, 20, 320, 460}},
        PlacementCase{"NoScreen", {}, {}, {300, 400}, kPanel, {}}),
    [](const auto& tested) { return tested.param.name; });

} // namespace

} // namespace sonvel::ui
