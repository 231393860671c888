#pragma once

#include "model/model_test.h"
#include "simulated/application_icons.h"
#include "ui/icons/app_icon_provider.h"
#include "ui/presentation/channel_column.h"
#include "ui/presentation/panel_theme.h"
#include "ui/presentation/views.h"
#include "ui/symbols/symbol_image_provider.h"

#include <QAccessible>
#include <QQmlEngine>
#include <QQuickItem>
#include <QQuickView>
#include <QTest>

/// For GoogleTest's messages.
inline void PrintTo(const QString& text, std::ostream* out) {
  *out << '"' << text.toStdString() << '"';
}

namespace sonvel {

/// Reads and operates a window on an offscreen display.
class WindowUser {
 public:
  virtual ~WindowUser() = default;

 protected:
  virtual QQuickWindow* window() const = 0;

  static QAccessibleInterface* accessible(QObject* object) {
    return QAccessible::queryAccessibleInterface(object);
  }

  /// Waits until the list has all rows that it needs, and lays the items out.
  void arrange() const {
    const auto* const column = window()->findChild<ChannelColumn*>();
    do
      (void)window()->grabWindow();
    while (column != nullptr && !column->isSettled() && QTest::qWaitFor([&] { return column->isSettled(); }));
  }

  /// All visible items of a frame that is drawn now, in reading order.
  std::vector<QQuickItem*> itemsOfFrame() const {
    (void)window()->grabWindow();
    std::vector<QQuickItem*> items;
    const std::function<void(QQuickItem*)> collect = [&](QQuickItem* item) {
      if (!item->isVisible()) return;
      items.push_back(item);
      for (auto* child : item->childItems())
        collect(child);
    };
    collect(window()->contentItem());
    return items;
  }

  /// The same when no row is missing.
  std::vector<QQuickItem*> items() const {
    arrange();
    return itemsOfFrame();
  }

  /// The items with an accessible role, and with the name if given.
  std::vector<QQuickItem*> itemsOf(QAccessible::Role role, const QString& name = {}) const {
    auto found = items();
    std::erase_if(found, [&](QQuickItem* item) {
      const auto* seen = accessible(item);
      return seen == nullptr || seen->role() != role ||
             (!name.isEmpty() && seen->text(QAccessible::Name) != name);
    });
    return found;
  }

  QStringList names(QAccessible::Role role) const {
    QStringList names;
    for (auto* item : itemsOf(role))
      names.append(accessible(item)->text(QAccessible::Name));
    return names;
  }

  /// Null, with a failure, unless there is exactly one.
  QQuickItem* item(QAccessible::Role role, const QString& name) const {
    const auto found = itemsOf(role, name);
    EXPECT_EQ(found.size(), 1U) << name.toStdString() << " in " << names(role).join(", ").toStdString();
    return found.size() == 1 ? found.front() : nullptr;
  }

  QQuickItem* button(const QString& name) const { return item(QAccessible::Button, name); }

  /// The item's position in the window.
  static QRectF place(const QQuickItem* item) {
    return item->mapRectToScene(QRectF(0, 0, item->width(), item->height()));
  }

  void click(QQuickItem* item) {
    ASSERT_NE(item, nullptr);
    QTest::mouseClick(window(), Qt::LeftButton, {}, place(item).center().toPoint());
  }

  void press(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
    QTest::keyClick(window(), key, modifiers);
  }
};

/// A scripted desktop appearance: light, without animations.
class ScriptedAppearance final : public DesktopAppearance {
 public:
  Appearance current() const override { return appearance_; }

  void onChange(std::function<void()> changed) override { changed_ = std::move(changed); }

  void set(const Appearance& appearance) {
    appearance_ = appearance;
    if (changed_) changed_();
  }

 private:
  Appearance appearance_{.colorScheme = Appearance::ColorScheme::light, .prefersReducedMotion = true};
  std::function<void()> changed_;
};

/// The panel with the model on the simulated machine. Any warning of Qt fails the test.
class PanelTest : public MixerTest, protected WindowUser {
 protected:
  PanelTest() {
    registerViews();
    theme_.install(engine_);
    engine_.addImageProvider(SymbolImageProvider::kID, std::make_unique<SymbolImageProvider>().release());
    engine_.addImageProvider(AppIconProvider::kID, std::make_unique<AppIconProvider>(iconCache_).release());
  }

  ~PanelTest() override { view_.reset(); }

  QQuickWindow* window() const override { return view_.get(); }

  QQuickItem* root() const { return view_->rootObject(); }

  /// Opens the panel as the program does, and waits until the model is up to date.
  void open() {
    view_ = std::make_unique<QQuickView>(&engine_, nullptr);
    view_->setInitialProperties({{"model", QVariant::fromValue(model_.get())}, {"serverNotice", QString()}});
    view_->setSource(rootPanelURL());
    view_->show();
    view_->requestActivate();
    ASSERT_TRUE(QTest::qWaitForWindowActive(view_.get()));
    ASSERT_TRUE(settle());
    view_->setResizeMode(QQuickView::SizeRootObjectToView);
    arrange();
    resize(qRound(root()->implicitHeight()));
  }

  void resize(int height) {
    view_->resize(360, height);
    ASSERT_TRUE(pumpUntil([&] { return root()->height() == height; }));
  }

  /// Plays "Alpha" as "org.Alpha" and so on, and opens the panel.
  void openWith(const std::vector<std::string>& names) {
    for (const auto& name : names)
      play(name, "org." + name);
    open();
  }

  /// A new model, as after a restart of the program.
  void makeModelAnew() {
    model_ = std::make_shared<MixerViewModel>(
        MixerDependencies{actor_, mainThread_, clock_, permission_, preferences_, updates_});
  }

  /// Ends the application and waits until its row is paused.
  void stopPlaying(AudioObjectID process) {
    audio_.removeProcess(process);
    passReconciliation();
    passReconciliation();
  }

  QQuickItem* child(const char* name) const {
    const auto all = items();
    const auto found = std::ranges::find(all, QLatin1String(name), &QObject::objectName);
    return found != all.end() ? *found : nullptr;
  }

  QQuickItem* volume(const QString& name) const { return item(QAccessible::Slider, name + " volume"); }

  QQuickItem* master() const { return item(QAccessible::Slider, "System Output"); }

  /// The centre of a slider's handle at this value.
  static QPoint handlePlace(const QQuickItem* slider, double value) {
    const auto* handle = slider->property("handle").value<QQuickItem*>();
    const double from = slider->property("from").toDouble();
    const double way = (value - from) / (slider->property("to").toDouble() - from);
    const double x = handle->width() / 2 + way * (slider->width() - handle->width());
    return slider->mapToScene({x, slider->height() / 2}).toPoint();
  }

  void clickAt(QQuickItem* slider, double value) {
    QTest::mouseClick(window(), Qt::LeftButton, {}, handlePlace(slider, value));
  }

  /// Presses Tab until the item has the focus; false if it never gets it.
  bool tabTo(const QQuickItem* item) {
    for (int i = 0; i < 400 && view_->activeFocusItem() != item; ++i)
      press(Qt::Key_Tab);
    return view_->activeFocusItem() == item;
  }

  ScriptedAppearance appearance_;
  PanelTheme theme_{appearance_};
  simulated::SimulatedApplicationIcons icons_;
  AppIconCache iconCache_{applications_, icons_};
  QQmlEngine engine_;
  std::unique_ptr<QQuickView> view_;
};

} // namespace sonvel
