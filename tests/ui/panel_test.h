#pragma once

#include "model/model_test.h"
#include "ui/presentation/panel_theme.h"

#include <QAccessible>
#include <QQmlEngine>
#include <QQuickItem>
#include <QQuickView>
#include <QTest>

/// As GoogleTest shows it.
inline void PrintTo(const QString& text, std::ostream* out) {
  *out << '"' << text.toStdString() << '"';
}

namespace sonvel {

/// A desktop's appearance that a test decides. Light, and nothing moves by itself.
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

/// The panel in a window without a display, over the model on the simulated machine. A warning of Qt, also
/// one of a missing symbol, fails the test.
class PanelTest : public MixerTest {
 protected:
  PanelTest();
  ~PanelTest() override;

  /// Opens the panel as the program does, and waits until the model is up to date.
  void open();

  void close() { view_.reset(); }

  /// Plays "Alpha" as "org.Alpha" and so on, and opens the panel.
  void openWith(const std::vector<std::string>& names);

  /// The application ends, and its row is paused.
  void stopPlaying(AudioObjectID process);

  QQuickItem* root() const { return view_->rootObject(); }

  /// Every visible item of the window, laid out, in reading order.
  std::vector<QQuickItem*> items() const;

  QQuickItem* itemNamed(const QString& objectName) const;

  /// The item with that accessible role and name. A failure, and null, if there is not exactly one.
  QQuickItem* item(QAccessible::Role role, const QString& name) const;

  QQuickItem* button(const QString& name) const { return item(QAccessible::Button, name); }

  /// The volume slider of the application of that name.
  QQuickItem* slider(const QString& name) const { return item(QAccessible::Slider, name + " volume"); }

  /// The accessible names of one role, in reading order.
  QStringList names(QAccessible::Role role) const;

  /// Everything that the user sees, one line each: texts with their colour, controls with their description
  /// and value, symbols, icons, meters, and what is faded or disabled.
  QStringList shown() const;

  static QAccessibleInterface* accessible(QObject* object) {
    return QAccessible::queryAccessibleInterface(object);
  }

  /// Where the item is in the window.
  static QRectF place(const QQuickItem* item);

  /// Where the middle of a slider's handle is at this value.
  static QPoint handlePlace(const QQuickItem* slider, double value);

  void click(QQuickItem* item);
  void clickAt(QQuickItem* slider, double value);
  void press(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier);

  /// Presses Tab until the item has the focus; false if it never gets it.
  bool tabTo(const QQuickItem* item);

  ScriptedAppearance appearance_;
  std::optional<PanelTheme> theme_;
  std::optional<QQmlEngine> engine_;
  std::unique_ptr<QQuickView> view_;

 private:
  QString describe(QQuickItem* item) const;
  QString colorName(const QQuickItem* item) const;
};

} // namespace sonvel
