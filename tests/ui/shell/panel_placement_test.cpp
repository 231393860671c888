#include "ui/shell/panel_placement.h"

#include <gtest/gtest.h>

namespace sonvel::ui {
namespace {

constexpr QSize kPanel(360, 600);
constexpr QRect kNoIcon;

const ScreenArea kBarOnTop{.geometry = {0, 0, 1920, 1080}, .available = {0, 32, 1920, 1048}};
const ScreenArea kBarBelow{.geometry = {0, 0, 1920, 1080}, .available = {0, 0, 1920, 1036}};
const ScreenArea kBarAtTheLeft{.geometry = {0, 0, 1920, 1080}, .available = {64, 0, 1856, 1080}};
// To the right of the others, lower, and scaled twice: its logical size leaves gaps around it.
const ScreenArea kScaled{.geometry = {1920, 200, 1280, 720}, .available = {1920, 200, 1280, 680}};
const ScreenArea kSmall{.geometry = {0, 0, 320, 480}, .available = {0, 20, 320, 460}};
const ScreenArea kLeft{.geometry = {-1280, 0, 1280, 1024}, .available = {-1280, 0, 1280, 1024}};

TEST(PanelPlacement, IsAtTheIconOrInThePointersCorner) {
  const struct {
    const char* what;
    QList<ScreenArea> screens;
    QRect icon;
    QPoint pointer;
    QRect panel;
  } cases[] = {
      {"icon in a top bar", {kBarOnTop}, {1000, 4, 24, 24}, {}, {832, 32, 360, 600}},
      {"icon near the right edge", {kBarOnTop}, {1890, 4, 24, 24}, {}, {1560, 32, 360, 600}},
      {"icon near the left edge", {kBarOnTop}, {2, 4, 24, 24}, {}, {0, 32, 360, 600}},
      {"icon in a bar below", {kBarBelow}, {1000, 1046, 24, 24}, {}, {832, 436, 360, 600}},
      {"icon in a bar at the left", {kBarAtTheLeft}, {20, 1040, 24, 24}, {}, {64, 440, 360, 600}},
      {"icon on the second screen", {kBarOnTop, kScaled}, {3000, 890, 24, 24}, {}, {2832, 280, 360, 600}},
      {"pointer top right", {kBarOnTop}, kNoIcon, {1700, 10}, {1560, 32, 360, 600}},
      {"pointer top left", {kBarOnTop}, kNoIcon, {100, 10}, {0, 32, 360, 600}},
      {"pointer bottom right", {kBarBelow}, kNoIcon, {1700, 1070}, {1560, 436, 360, 600}},
      {"pointer bottom left", {kBarAtTheLeft}, kNoIcon, {30, 1070}, {64, 480, 360, 600}},
      {"screen left of the origin", {kBarOnTop, kLeft}, kNoIcon, {-5, 1000}, {-360, 424, 360, 600}},
      {"pointer in a gap", {kBarOnTop, kScaled}, kNoIcon, {3100, 150}, {2840, 200, 360, 600}},
      {"screen smaller than the panel", {kSmall}, kNoIcon, {300, 400}, {0, 20, 320, 460}},
      {"icon on such a screen", {kSmall}, {280, 0, 20, 20}, {}, {0, 20, 320, 460}},
      {"no screen", {}, kNoIcon, {300, 400}, {}},
  };

  for (const auto& [what, screens, icon, pointer, panel] : cases)
    EXPECT_EQ(panelGeometry(screens, icon, pointer, kPanel), panel) << what;
}

} // namespace
} // namespace sonvel::ui
