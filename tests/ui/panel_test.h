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

  void set(const Appearance& appearance);

 private:
  Appearance appearance_{.colorScheme = Appearance::ColorScheme::light, .prefersReducedMotion = true};
  std::function<void()> changed_;
};

/// The panel in a window that nobody sees, over the model on the simulated machine. A warning of Qt, also one
/// of a missing symbol, fails the test.
class PanelTest : public MixerTest {
 protected:
  PanelTest();
  ~PanelTest() override;

  /// Opens the panel as the program does, and lets the model come up.
  void open();

  void close() { view_.reset(); }

  /// Plays "Alpha" as "org.Alpha" and so on, and opens the panel.
  void openWith(const std::vector<std::string>& names);

  QQuickItem* root() const { return view_->rootObject(); }

  /// Brings every item to its place, as before a frame.
  void layOut() const { (void)view_->grabWindow(); }

  /// Everything in the window that is shown, after laying it out.
  std::vector<QQuickItem*> items() const;

  QQuickItem* itemNamed(const QString& objectName) const;

  /// What an assistive technology finds in the window and can be seen, in its order.
  std::vector<QAccessibleInterface*> accessibles() const;

  /// Their names, of those of one role.
  QStringList names(QAccessible::Role role) const;

  /// The one with that role and name. A failure, and null, if there is not exactly one.
  QAccessibleInterface* find(QAccessible::Role role, const QString& name) const;

  static QAccessibleInterface* accessible(QObject* object) {
    return QAccessible::queryAccessibleInterface(object);
  }

  QQuickItem* item(QAccessible::Role role, const QString& name) const;
  bool shows(const QString& text) const;

  /// The slider of the application of that name.
  QQuickItem* slider(const QString& name) const { return item(QAccessible::Slider, name + " volume"); }

  /// Where it is in the window.
  static QRectF place(const QQuickItem* item);

  /// Where the handle of a slider has its middle at this value.
  static QPoint handlePlace(const QQuickItem* slider, double value);

  void click(QQuickItem* item);
  void press(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier);

  /// Presses Tab until the item has the focus; false if it never comes there.
  bool tabTo(const QQuickItem* item);

  ScriptedAppearance appearance_;
  std::optional<PanelTheme> theme_;
  std::optional<QQmlEngine> engine_;
  std::unique_ptr<QQuickView> view_;
  QStringList iconsAskedFor_; ///< the ids
};

} // namespace sonvel
