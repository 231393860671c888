#include "ui/panel_test.h"

#include <QPainter>
#include <QQuickPaintedItem>
#include <algorithm>

namespace sonvel {
namespace {

const QString kPaused = "Paused — keeps this volume when it plays again";

class ChannelRowTest : public PanelTest {
 protected:
  /// Whether the symbol is drawn.
  bool showsSymbol(const QString& name) const { return symbol(name) != nullptr; }

  QQuickItem* symbol(const QString& name) const {
    for (auto* child : items())
      if (child->inherits("QQuickImage") &&
          child->property("source").toUrl().path().startsWith("/" + name + "/"))
        return child;
    return nullptr;
  }

  QQuickItem* text(const QString& name) const { return item(QAccessible::StaticText, name); }

  /// Of the filled part of a meter, as it is drawn.
  static int filledWidth(const QQuickItem& meter) {
    auto* fill = qobject_cast<QQuickPaintedItem*>(meter.childItems().at(1));
    QImage image(fill->size().toSize(), QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    fill->paint(&painter);
    int width = image.width();
    while (width > 0 && qAlpha(image.pixel(width - 1, image.height() / 2)) == 0)
      --width;
    return width;
  }

  QColor color(const QString& name) const { return text(name)->property("color").value<QColor>(); }
};

TEST_F(ChannelRowTest, ShowsAnApplicationThatPlays) {
  openWith({"Alpha"});
  EXPECT_EQ(names(QAccessible::StaticText).mid(4, 3), QStringList({"APPS", "Alpha", "100 percent"}));
  EXPECT_EQ(names(QAccessible::ListItem), QStringList({"Alpha"}));
  EXPECT_EQ(names(QAccessible::Button).mid(0, 3),
            QStringList({"Remove Alpha from the mixer", "Mute Alpha", "Output for Alpha"}));
  EXPECT_EQ(text("100 percent")->property("text"), "100");
  EXPECT_EQ(color("Alpha"), theme_->primary());
  EXPECT_EQ(item(QAccessible::ListItem, "Alpha")->opacity(), 1);
  EXPECT_TRUE(iconsAskedFor_.last().endsWith("/0"));
  EXPECT_FALSE(showsSymbol("bolt.fill"));
  EXPECT_TRUE(showsSymbol("speaker.wave.2.fill"));
  EXPECT_FALSE(shows("idle"));
  EXPECT_FALSE(shows(kPaused));

  auto* volume = find(QAccessible::Slider, "Alpha volume");
  EXPECT_EQ(volume->text(QAccessible::Description), "Adjusts this app's output volume");
  EXPECT_EQ(volume->valueInterface()->currentValue(), 100);
  EXPECT_EQ(volume->valueInterface()->minimumValue().toDouble(), 0);
  EXPECT_EQ(volume->valueInterface()->maximumValue().toDouble(), 200);
  auto* output = find(QAccessible::Button, "Output for Alpha");
  EXPECT_EQ(output->text(QAccessible::Description), "System Output");
}

TEST_F(ChannelRowTest, MarksABoost) {
  openWith({"Alpha"});
  model_->setGain(150, row("org.Alpha"));
  EXPECT_TRUE(showsSymbol("bolt.fill"));
  EXPECT_EQ(text("150 percent")->property("text"), "150");
  EXPECT_EQ(slider("Alpha")->property("value"), 150);
}

TEST_F(ChannelRowTest, DimsWhatIsMutedButLetsItMove) {
  openWith({"Alpha"});
  row("org.Alpha")->setLevel(0.5F);
  auto* meter = itemNamed("meter");
  EXPECT_EQ(meter->property("shown"), 0.5);
  EXPECT_EQ(meter->opacity(), 1);
  click(item(QAccessible::Button, "Mute Alpha"));
  EXPECT_TRUE(row("org.Alpha")->muted());
  EXPECT_TRUE(showsSymbol("speaker.slash.fill"));
  EXPECT_EQ(color("100 percent"), theme_->secondary());
  EXPECT_EQ(meter->property("shown"), 0.0);
  EXPECT_EQ(slider("Alpha")->opacity(), 0.4);
  QTest::mouseClick(view_.get(), Qt::LeftButton, {}, handlePlace(slider("Alpha"), 50));
  EXPECT_NEAR(row("org.Alpha")->gainPercent(), 50, 1);
  click(item(QAccessible::Button, "Unmute Alpha"));
  EXPECT_FALSE(row("org.Alpha")->muted());
  EXPECT_EQ(slider("Alpha")->opacity(), 1);
}

TEST_F(ChannelRowTest, StepsBackWhenPaused) {
  const auto process = play("Alpha", "org.Alpha");
  open();
  audio_.removeProcess(process);
  passReconciliation();
  passReconciliation();
  ASSERT_FALSE(row("org.Alpha")->isPlaying());
  EXPECT_TRUE(shows("idle"));
  EXPECT_TRUE(shows(kPaused));
  EXPECT_EQ(color("Alpha"), theme_->secondary());
  EXPECT_EQ(item(QAccessible::ListItem, "Alpha")->opacity(), 0.9);
  EXPECT_FALSE(names(QAccessible::Button).contains("Output for Alpha"));
  EXPECT_TRUE(iconsAskedFor_.last().endsWith("/70"));
  EXPECT_EQ(itemNamed("meter")->opacity(), 0.25);
}

TEST_F(ChannelRowTest, ShowsAnErrorAsOneText) {
  const auto process = play("Alpha", "org.Alpha");
  open();
  row("org.Alpha")->setLastError("Tap <b>failed</b> (OSStatus -50)");
  EXPECT_TRUE(shows("Audio control error, Tap <b>failed</b> (OSStatus -50)"));
  EXPECT_TRUE(names(QAccessible::Button).contains("Output for Alpha"));
  audio_.removeProcess(process);
  passReconciliation();
  passReconciliation();
  EXPECT_TRUE(shows("Audio control error, Tap <b>failed</b> (OSStatus -50)"));
  EXPECT_FALSE(shows(kPaused));
}

TEST_F(ChannelRowTest, RemovesTheRow) {
  openWith({"Alpha", "Beta"});
  click(item(QAccessible::Button, "Remove Alpha from the mixer"));
  EXPECT_EQ(rowNames(), std::vector<std::string>({"Beta"}));
  EXPECT_EQ(names(QAccessible::ListItem), QStringList({"Beta"}));
  ASSERT_TRUE(settle());
}

TEST_F(ChannelRowTest, SaysWhatItsSymbolsDo) {
  openWith({"Alpha"});
  const auto help = [this](const QString& name) {
    return find(QAccessible::Button, name)->text(QAccessible::Description);
  };
  EXPECT_EQ(help("Remove Alpha from the mixer"), "Remove from list");
  EXPECT_EQ(help("Mute Alpha"), "Mute");
  model_->toggleMute(row("org.Alpha"));
  EXPECT_EQ(help("Unmute Alpha"), "Unmute");

  auto* button = item(QAccessible::Button, "Remove Alpha from the mixer");
  QTest::mouseMove(view_.get(), {1, 1}); // where it is from the test before, it would not move at all
  QTest::mouseMove(view_.get(), place(button).center().toPoint());
  const auto showsHelp = [this] {
    const auto all = items();
    return std::ranges::any_of(all, [](auto* item) { return item->property("text") == "Remove from list"; });
  };
  EXPECT_TRUE(QTest::qWaitFor(showsHelp, std::chrono::milliseconds(kDeadline).count()));
}

TEST_F(ChannelRowTest, AValueSetByAnAssistiveTechnologyCountsAsADrag) {
  openWith({"Alpha"});
  find(QAccessible::Slider, "Alpha volume")->valueInterface()->setCurrentValue(37.4);
  EXPECT_EQ(row("org.Alpha")->gainPercent(), 37);
  EXPECT_EQ(slider("Alpha")->property("value"), 37);
  EXPECT_EQ(remembered().at("org.Alpha").first, 37);
  find(QAccessible::Slider, "System Output")->valueInterface()->setCurrentValue(0.8);
  EXPECT_EQ(model_->masterVolume(), 0.8);
}

TEST_F(ChannelRowTest, APressByAnAssistiveTechnologyCountsAsAClick) {
  openWith({"Alpha"});
  const auto press = [this](const QString& name) {
    find(QAccessible::Button, name)->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
  };
  press("Mute Alpha");
  EXPECT_TRUE(row("org.Alpha")->muted());
  press("Output for Alpha");
  EXPECT_EQ(names(QAccessible::MenuItem).size(), 3);
  const auto* headset = find(QAccessible::MenuItem, "Headset");
  EXPECT_NE(headset, nullptr);
}

TEST_F(ChannelRowTest, AMeterIsFilledByItsLevel) {
  openWith({"Alpha"});
  auto* meter = itemNamed("meter");
  EXPECT_EQ(meter->height(), 3);
  for (const auto& [level, fraction] : {std::pair{1.7F, 1.0}, {-0.2F, 0.0}, {0.0F, 0.0}, {0.25F, 0.25}}) {
    row("org.Alpha")->setLevel(level);
    EXPECT_NEAR(filledWidth(*meter), meter->width() * fraction, 1) << level;
  }
}

} // namespace
} // namespace sonvel
