#pragma once

#include "platform/clock.h"

#include <QObject>
#include <QRect>
#include <QUrl>
#include <QVariantMap>
#include <chrono>
#include <functional>
#include <memory>
#include <optional>

class QQmlEngine;
class QQuickItem;
class QQuickWindow;

namespace sonvel::ui {

/// What a panel shows: made anew for each opening.
struct PanelContent {
  QUrl source;            ///< of an Item that has an implicit width and height
  QVariantMap properties; ///< its properties from the start, the required ones among them
  std::function<void(QQmlEngine&)> prepareEngine = nullptr; ///< before it is made
  std::function<void(QQuickItem&)> ready = nullptr;         ///< before it is seen
};

/// The window around the panel's content. There is one while it is open and nothing when it is closed:
/// window, content and QML engine are destroyed.
///
/// As a panel it has no frame, lies at the tray icon, and closes on Escape and on a click elsewhere. As a
/// plain window it has the title "Sonvel" and closes as any window does.
///
/// Main thread. Closing it never ends the application by itself.
class PanelWindow final : public QObject {
  Q_OBJECT

 public:
  enum class Style { panel, plainWindow };

  /// The click on the icon that takes the focus from the panel, and so closes it, is told this much later at
  /// most.
  static constexpr std::chrono::milliseconds kClickDuration{400};

  /// Needs a QGuiApplication; the clock outlives it.
  PanelWindow(PanelContent content, const Clock& clock);
  ~PanelWindow() override;
  PanelWindow(const PanelWindow&) = delete;
  PanelWindow& operator=(const PanelWindow&) = delete;

  /// Opens it, or asks the window manager to raise and activate what is open in this style. `icon` is where
  /// the tray icon is, empty when nobody knows. False when the content can't be made: the reason is logged.
  bool open(Style style, const QRect& icon = {});

  /// What a click on the tray icon does: opens the panel or closes what is open. A click that has just closed
  /// the panel, by being elsewhere, doesn't open it again.
  void toggle(const QRect& icon = {});

  void close();

  [[nodiscard]] bool isOpen() const noexcept { return shown_ != nullptr; }

  /// Null when closed.
  [[nodiscard]] QQuickWindow* window() const noexcept;

  /// The style of what is open.
  [[nodiscard]] std::optional<Style> style() const noexcept;

 Q_SIGNALS:
  void opened();
  void closed();
  /// After closed(), when the user closed a plain window.
  void plainWindowClosedByUser();

 private:
  class Window;
  struct Shown;

  [[nodiscard]] std::unique_ptr<Shown> make(Style style);
  void follow(QQuickItem& root);
  void fit();
  void onFocusWindowChanged(const QObject* focused);
  void destroyLeaving();
  void closeByUser();

  PanelContent content_;
  const Clock& clock_;
  std::unique_ptr<Shown> shown_;
  std::unique_ptr<Shown> leaving_;            // what was closed in this turn of the event loop
  std::optional<Clock::TimePoint> lostFocus_; // when the panel was closed by that
};

} // namespace sonvel::ui
