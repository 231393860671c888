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

/// The panel's content; created anew for each opening.
struct PanelContent {
  QUrl source;            ///< an Item with implicit width and height
  QVariantMap properties; ///< initial properties, including the required ones
  std::function<void(QQmlEngine&)> prepareEngine = nullptr; ///< called before the content is created
  std::function<void(QQuickItem&)> ready = nullptr;         ///< called before it is shown
};

/// The window of the panel's content. While closed nothing exists: window, content and QML engine are
/// destroyed.
///
/// As a panel it has no frame, is placed at the tray icon, and closes on Escape or a click elsewhere. As a
/// plain window it has the title "Sonvel" and closes like any window.
///
/// Main thread. Closing it never quits the application by itself.
class PanelWindow final : public QObject {
  Q_OBJECT

 public:
  enum class Style { panel, plainWindow };

  /// A click on the icon first takes the focus, which closes the panel, and is reported at most this much
  /// later.
  static constexpr std::chrono::milliseconds kClickDuration{400};

  /// Needs a QGuiApplication; the clock outlives it.
  PanelWindow(PanelContent content, const Clock& clock);
  ~PanelWindow() override;
  PanelWindow(const PanelWindow&) = delete;
  PanelWindow& operator=(const PanelWindow&) = delete;

  /// Opens it, or asks the window manager to raise and activate the open one of this style. `icon` is the
  /// tray icon's position, empty if unknown. False, with a log message, if the content can't be created.
  bool open(Style style, const QRect& icon = {});

  /// For a click on the tray icon: opens or closes the panel. A click that has just closed the panel by
  /// taking the focus does not open it again. `click` is its place, null if unknown.
  void toggle(const QRect& icon = {}, const QPoint& click = {});

  void close();

  [[nodiscard]] bool isOpen() const noexcept { return shown_ != nullptr; }

  /// Null when closed.
  [[nodiscard]] QQuickWindow* window() const noexcept;

  /// The style of the open window.
  [[nodiscard]] std::optional<Style> style() const noexcept;

 Q_SIGNALS:
  void opened();
  void closed();
  /// False while the window is invisible: minimised, or covered if the desktop reports that.
  void seenChanged(bool isSeen);
  /// After closed(), if the user closed a plain window.
  void plainWindowClosedByUser();

 private:
  class Window;
  class Steps;
  struct Shown;

  [[nodiscard]] std::unique_ptr<Shown> make(Style style);
  void follow(QQuickItem& root);
  [[nodiscard]] QPoint pointer() const;
  void fit();
  void onFocusWindowChanged(const QObject* focused);
  void destroyLeaving();
  void closeByUser();

  PanelContent content_;
  const Clock& clock_;
  std::unique_ptr<Shown> shown_;
  std::unique_ptr<Shown> leaving_;            // closed in this turn of the event loop
  std::optional<Clock::TimePoint> lostFocus_; // when that closed the panel
  QPoint lastClick_;                          // on the icon; null if unknown
};

} // namespace sonvel::ui
