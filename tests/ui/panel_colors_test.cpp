#include "ui/colors/contrast.h"
#include "ui/colors/panel_colors.h"

#include <gtest/gtest.h>

namespace sonvel {
namespace {

using contrast::over;
using contrast::ratio;
using enum Appearance::ColorScheme;

QPalette desktop(QRgb window, QRgb text, QRgb highlight) {
  QPalette palette;
  palette.setColor(QPalette::Window, QColor(window));
  palette.setColor(QPalette::WindowText, QColor(text));
  palette.setColor(QPalette::Highlight, QColor(highlight));
  return palette;
}

TEST(PanelColorsTest, AreLegibleOnEveryDesktop) {
  EXPECT_NEAR(ratio(QColor(0x77, 0x77, 0x77), Qt::white), 4.48, 0.005);
  for (const auto scheme : {noPreference, light, dark})
    for (const std::optional<std::uint32_t> accent : {std::optional<std::uint32_t>(), {0xffff00U}, {0U}})
      for (const auto& palette :
           {desktop(0xeff0f1, 0x232629, 0x3daee9), desktop(0x2a2e32, 0xfcfcfc, 0x3daee9),
            desktop(0xffffff, 0x000000, 0xffff00), desktop(0x808080, 0x777777, 0x808080)}) {
        const bool isHigh = accent == 0U;
        const auto colors = panelColors(
            {.colorScheme = scheme, .accentColor = accent, .prefersHighContrast = isHigh}, palette);
        const auto faint = [&](const QColor& color) { return over(colors.window, color, 0.9); };
        double text =
            std::min({ratio(colors.primary, colors.control), ratio(colors.primary, colors.menu),
                      ratio(colors.onAccent, colors.prominent), ratio(colors.disabled, colors.window),
                      ratio(faint(colors.secondary), faint(over(colors.window, colors.secondary, 0.15)))});
        for (const auto& color : {colors.primary, colors.secondary, colors.accent, colors.orange, colors.red})
          text = std::min({text, ratio(color, colors.fill), ratio(faint(color), colors.window)});
        EXPECT_GE(text, isHigh ? PanelColors::highTextRatio : PanelColors::textRatio)
            << palette.color(QPalette::Window).name().toStdString();
        for (const auto& symbol : {colors.tertiary, colors.tint})
          EXPECT_GE(ratio(faint(symbol), colors.window), PanelColors::symbolRatio);
      }
}

TEST(PanelColorsTest, AreTheDesktopsOwnWhereTheySuitItsScheme) {
  const auto bright = desktop(0xeff0f1, 0x232629, 0xe93d3d);
  EXPECT_EQ(panelColors({.colorScheme = light}, bright).window, QColor(0xeff0f1));
  EXPECT_LT(panelColors({.colorScheme = dark}, bright).window.lightness(), 80);
  EXPECT_NEAR(panelColors({.accentColor = 0x00aa00}, bright).tint.hslHue(), 120, 2);
  EXPECT_NEAR(panelColors({}, bright).tint.hslHue(), 0, 2) << "without an accent its highlight";
}

} // namespace
} // namespace sonvel
