#include "ui/colors/contrast.h"
#include "ui/colors/panel_colors.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>

namespace sonvel {
namespace {

using contrast::over;
using contrast::ratio;

QPalette desktopPalette(QRgb window, QRgb text, QRgb highlight) {
  QPalette palette;
  palette.setColor(QPalette::Window, QColor(window));
  palette.setColor(QPalette::WindowText, QColor(text));
  palette.setColor(QPalette::Highlight, QColor(highlight));
  return palette;
}

const QPalette kBreeze = desktopPalette(0xeff0f1, 0x232629, 0x3daee9);
const QPalette kDarkDesktop = desktopPalette(0x2a2e32, 0xfcfcfc, 0x3daee9);

TEST(ContrastTest, FollowsTheGuidelines) {
  EXPECT_NEAR(ratio(Qt::black, Qt::white), 21.0, 1e-9);
  EXPECT_NEAR(ratio(QColor(0x77, 0x77, 0x77), Qt::white), 4.48, 0.005);
  EXPECT_EQ(over(Qt::black, Qt::white, 0.5), QColor(128, 128, 128));
  const auto isNearlyWhite = [](const QColor& color) { return color.red() >= 250; };
  EXPECT_EQ(contrast::towards(QColor(251, 0, 0), Qt::white, isNearlyWhite), QColor(251, 0, 0));
  EXPECT_EQ(contrast::towards(Qt::black, Qt::white, [](const QColor&) { return false; }), QColor(Qt::white));
}

/// Everywhere the views put text and symbols.
void expectLegible(const PanelColors& colors) {
  for (const auto& text : {colors.primary, colors.secondary, colors.accent, colors.orange, colors.red}) {
    EXPECT_GE(ratio(text, colors.window), PanelColors::textRatio) << text.name().toStdString();
    EXPECT_GE(ratio(text, colors.fill), PanelColors::textRatio) << text.name().toStdString();
    EXPECT_GE(ratio(over(colors.window, text, 0.9), colors.window), PanelColors::textRatio)
        << text.name().toStdString();
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

TEST(PanelColorsTest, CanBeReadOnEveryDesktop) {
  const std::array palettes{kBreeze,
                            kDarkDesktop,
                            desktopPalette(0xffffff, 0x000000, 0xffff00),
                            desktopPalette(0x000000, 0xffffff, 0x000080),
                            desktopPalette(0x808080, 0x777777, 0x808080),
                            desktopPalette(0x008080, 0x008081, 0xff00ff),
                            desktopPalette(0xd4d0c8, 0x000000, 0x0a246a)};
  const std::array<std::optional<std::uint32_t>, 6> accents{std::nullopt, 0xffff00, 0x000000,
                                                            0xffffff,     0x2ec27e, 0x3584e4};
  using enum Appearance::ColorScheme;
  for (const auto scheme : {noPreference, light, dark})
    for (const auto& accent : accents)
      for (const auto& palette : palettes) {
        SCOPED_TRACE("scheme " + std::to_string(static_cast<int>(scheme)) + ", accent " +
                     std::to_string(accent.value_or(0)) + ", window " +
                     palette.color(QPalette::Window).name().toStdString());
        expectLegible(panelColors({.colorScheme = scheme, .accentColor = accent}, palette));
      }
}

TEST(PanelColorsTest, TakesTheDesktopsWindowIfItSuitsTheScheme) {
  using enum Appearance::ColorScheme;
  const auto window = [](Appearance::ColorScheme scheme, const QPalette& palette) {
    return panelColors({.colorScheme = scheme}, palette).window;
  };
  const auto isDark = [](const QColor& color) { return color.lightness() < 80; };
  EXPECT_EQ(window(noPreference, kBreeze), QColor(0xeff0f1));
  EXPECT_EQ(window(noPreference, kDarkDesktop), QColor(0x2a2e32));
  EXPECT_EQ(window(light, kBreeze), QColor(0xeff0f1));
  EXPECT_EQ(window(dark, kDarkDesktop), QColor(0x2a2e32));
  EXPECT_TRUE(isDark(window(dark, kBreeze)));
  EXPECT_FALSE(isDark(window(light, kDarkDesktop)));
}

TEST(PanelColorsTest, TakesTheUsersAccent) {
  const auto hue = [](std::optional<std::uint32_t> accent, QRgb highlight) {
    return panelColors({.accentColor = accent}, desktopPalette(0xffffff, 0x000000, highlight)).tint.hslHue();
  };
  EXPECT_NEAR(hue(0x00aa00, 0x3daee9), 120, 2) << "the desktop's answer first";
  EXPECT_NEAR(hue(std::nullopt, 0xe93d3d), 0, 2) << "else its highlight";
  EXPECT_NEAR(hue(std::nullopt, 0x909090), 216, 4) << "unless that is no colour";
}

} // namespace
} // namespace sonvel
