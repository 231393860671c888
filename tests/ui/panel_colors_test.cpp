#include "ui/colors/contrast.h"
#include "ui/colors/panel_colors.h"

#include <gtest/gtest.h>

namespace sonvel {
namespace {

using contrast::over;
using contrast::ratio;
using enum Appearance::ColorScheme;

QPalette desktopPalette(QRgb window, QRgb text, QRgb highlight) {
  QPalette palette;
  palette.setColor(QPalette::Window, QColor(window));
  palette.setColor(QPalette::WindowText, QColor(text));
  palette.setColor(QPalette::Highlight, QColor(highlight));
  return palette;
}

const QPalette kLightDesktop = desktopPalette(0xeff0f1, 0x232629, 0x3daee9);
const QPalette kDarkDesktop = desktopPalette(0x2a2e32, 0xfcfcfc, 0x3daee9);

/// Everywhere the views put text and symbols.
void expectLegible(const PanelColors& colors) {
  for (const auto& text : {colors.primary, colors.secondary, colors.accent, colors.orange, colors.red}) {
    EXPECT_GE(ratio(text, colors.fill), PanelColors::textRatio) << text.name().toStdString();
    EXPECT_GE(ratio(over(colors.window, text, 0.9), colors.window), PanelColors::textRatio);
  }
  const QColor badge = over(colors.window, colors.secondary, 0.15);
  EXPECT_GE(ratio(over(colors.window, colors.secondary, 0.9), over(colors.window, badge, 0.9)),
            PanelColors::textRatio);
  EXPECT_GE(ratio(colors.primary, colors.control), PanelColors::textRatio);
  EXPECT_GE(ratio(colors.primary, colors.menu), PanelColors::textRatio);
  EXPECT_GE(ratio(colors.onAccent, colors.prominent), PanelColors::textRatio);
  for (const auto& symbol : {colors.tertiary, colors.tint})
    EXPECT_GE(ratio(over(colors.window, symbol, 0.9), colors.window), PanelColors::symbolRatio)
        << symbol.name().toStdString();
}

TEST(PanelColorsTest, AreLegibleOnEveryDesktop) {
  EXPECT_NEAR(ratio(Qt::black, Qt::white), 21.0, 1e-9);
  EXPECT_NEAR(ratio(QColor(0x77, 0x77, 0x77), Qt::white), 4.48, 0.005);
  for (const auto scheme : {noPreference, light, dark})
    for (const std::optional<std::uint32_t> accent : {std::optional<std::uint32_t>(), {0xffff00U}, {0U}})
      for (const auto& palette :
           {kLightDesktop, kDarkDesktop, desktopPalette(0xffffff, 0x000000, 0xffff00),
            desktopPalette(0x000000, 0xffffff, 0x000080), desktopPalette(0x808080, 0x777777, 0x808080)}) {
        SCOPED_TRACE(palette.color(QPalette::Window).name().toStdString());
        expectLegible(panelColors({.colorScheme = scheme, .accentColor = accent}, palette));
      }
}

TEST(PanelColorsTest, TakeTheDesktopsWindowIfItSuitsTheScheme) {
  const auto window = [](Appearance::ColorScheme scheme, const QPalette& palette) {
    return panelColors({.colorScheme = scheme}, palette).window;
  };
  EXPECT_EQ(window(noPreference, kDarkDesktop), QColor(0x2a2e32));
  EXPECT_EQ(window(light, kLightDesktop), QColor(0xeff0f1));
  EXPECT_LT(window(dark, kLightDesktop).lightness(), 80);
  EXPECT_GT(window(light, kDarkDesktop).lightness(), 200);
}

TEST(PanelColorsTest, TakeTheUsersAccent) {
  const auto hue = [](std::optional<std::uint32_t> accent, QRgb highlight) {
    return panelColors({.accentColor = accent}, desktopPalette(0xffffff, 0x000000, highlight)).tint.hslHue();
  };
  EXPECT_NEAR(hue(0x00aa00, 0x3daee9), 120, 2) << "the desktop's answer first";
  EXPECT_NEAR(hue(std::nullopt, 0xe93d3d), 0, 2) << "else its highlight";
  EXPECT_NEAR(hue(std::nullopt, 0x909090), 216, 4) << "unless that is no colour";
}

} // namespace
} // namespace sonvel
