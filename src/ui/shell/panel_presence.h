#pragma once

#include <QObject>
#include <QRect>
#include <QTimer>
#include <chrono>
#include <functional>
#include <optional>

namespace sonvel::ui {

class PanelWindow;

/// Sees to it that the user always finds the panel: at the tray icon while there is one, as a plain window
/// while there is none, whose closing then ends the program. Main thread.
class PanelPresence final : public QObject {
 public:
  /// For how long a tray may be missing while the desktop restarts it, before a window stands in.
  static constexpr std::chrono::milliseconds kTrayPatience{3000};

  /// `iconGeometry` says where the tray icon is, empty when nobody knows; `quit` asks the program to quit.
  /// The window outlives it.
  PanelPresence(PanelWindow& window, std::function<QRect()> iconGeometry, std::function<void()> quit,
                std::chrono::milliseconds trayPatience = kTrayPatience);

  /// What is known of the tray icon now.
  void setTrayShown(bool isShown);

  /// The icon was clicked.
  void clickIcon();

  /// The user wants to see the panel, by a start of the program or the icon's menu. Until something is known
  /// of the tray icon, this waits.
  void show();

  /// The program is about to end: closes the panel, which nothing opens from here on.
  void end();

 private:
  void standIn();

  PanelWindow& window_;
  std::function<QRect()> iconGeometry_;
  std::function<void()> quit_;
  QTimer missing_;
  std::optional<bool> isTrayShown_;
  bool isAwaited_ = false; // the panel, until the tray is known
  bool hasEnded_ = false;
};

} // namespace sonvel::ui
