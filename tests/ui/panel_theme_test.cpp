#include "ui/panel_test.h"

#include <gmock/gmock.h>

#include <QFontMetricsF>
#include <QGuiApplication>
#include <QSignalSpy>

namespace sonvel {
namespace {

using Scheme = Appearance::ColorScheme;

class PanelThemeTest : public PanelTest {
 protected:
  ~PanelThemeTest() override {
    QGuiApplication::setFont(font_);
    QGuiApplication::setPalette(palette_);
  }

 private:
  QFont font_ = QGuiApplication::font();
  QPalette palette_ = QGuiApplication::palette();
};

TEST_F(PanelThemeTest, FollowsTheDesktopWhileThePanelIsOpen) {
  open();
  const auto color = [this] { return root()->property("color").value<QColor>(); };
  EXPECT_GT(color().lightness(), 200);
  appearance_.set({.colorScheme = Scheme::dark});
  EXPECT_LT(color().lightness(), 80);

  appearance_.set({});
  QPalette palette = QGuiApplication::palette();
  palette.setColor(QPalette::Window, QColor(0x10, 0x11, 0x12));
  QGuiApplication::setPalette(palette);
  EXPECT_TRUE(pumpUntil([&] { return color() == QColor(0x10, 0x11, 0x12); }));
}

TEST_F(PanelThemeTest, AnnouncesOnlyWhatChanges) {
  const QSignalSpy colors(&*theme_, &PanelTheme::colorsChanged);
  const QSignalSpy animates(&*theme_, &PanelTheme::animatesChanged);
  EXPECT_FALSE(theme_->animates());
  appearance_.set({.colorScheme = Scheme::light});
  EXPECT_TRUE(theme_->animates());
  EXPECT_EQ(colors.count(), 0);
  EXPECT_EQ(animates.count(), 1);
  appearance_.set({.colorScheme = Scheme::light, .accentColor = 0xff0000});
  EXPECT_EQ(colors.count(), 1);
  EXPECT_EQ(animates.count(), 1);
}

TEST_F(PanelThemeTest, ScalesItsFontsWithTheDesktops) {
  struct Case {
    double points;
    std::array<int, 6> pixels; // body, headline, caption, caption2, section label, badge
  };

  const std::array cases{Case{10, {13, 13, 10, 10, 11, 9}}, Case{12, {16, 16, 12, 12, 13, 11}},
                         Case{4, {11, 11, 9, 9, 9, 8}}, Case{40, {20, 20, 15, 15, 17, 14}}};
  for (const auto& each : cases) {
    QFont font("DejaVu Sans");
    font.setPointSizeF(each.points);
    QGuiApplication::setFont(font);
    ASSERT_TRUE(pumpUntil([&] { return theme_->body().pixelSize() == each.pixels[0]; })) << each.points;
    const std::array pixels{theme_->body().pixelSize(),         theme_->headline().pixelSize(),
                            theme_->caption().pixelSize(),      theme_->caption2().pixelSize(),
                            theme_->sectionLabel().pixelSize(), theme_->badge().pixelSize()};
    EXPECT_EQ(pixels, each.pixels) << each.points;
    EXPECT_EQ(theme_->digits().pixelSize(), theme_->caption().pixelSize());
  }
  EXPECT_EQ(theme_->headline().weight(), QFont::DemiBold);
  EXPECT_EQ(theme_->sectionLabel().weight(), QFont::DemiBold);
  EXPECT_NEAR(theme_->sectionLabel().letterSpacing(), 0.6, 0.01);
  EXPECT_EQ(theme_->badge().weight(), QFont::DemiBold);
}

TEST_F(PanelThemeTest, DigitsAreOfOneWidth) {
  const QFontMetricsF metrics(theme_->digits());
  EXPECT_EQ(metrics.horizontalAdvance("111"), metrics.horizontalAdvance("208"));
}

} // namespace
} // namespace sonvel
