#pragma once

#include <QObject>
#include <QRect>
#include <QTimer>
#include <chrono>
#include <functional>
#include <optional>

namespace sonvel::ui {

class PanelWindow;

/// Puts the panel at the tray icon, or into a plain window where there is no tray. Main thread.
class PanelPresence final : public QObject {
 public:
  /// How long a tray may be missing, while the desktop restarts it, before a window replaces it.
  static constexpr std::chrono::milliseconds kTrayPatience{3000};

  /// `iconGeometry` returns the tray icon's position, empty if unknown; `closedWithoutIcon` is called when
  /// the user closes the window while there is no icon. The window outlives this object.
  PanelPresence(PanelWindow& window, std::function<QRect()> iconGeometry,
                std::function<void()> closedWithoutIcon,
                std::chrono::milliseconds trayPatience = kTrayPatience);

  /// Call when it becomes known whether the tray icon is visible, and at each change.
  void setTrayShown(bool isShown);

  /// Call when the icon is clicked; `place` is null if unknown.
  void clickIcon(const QPoint& place);

  /// Opens the panel for a start of the program or a menu action. Waits until it is known whether there is a
  /// tray.
  void show();

  /// Whether it is known that there is no tray icon.
  [[nodiscard]] bool isWithoutIcon() const noexcept { return isTrayShown_ == false; }

  /// Closes the panel for good, before the program ends.
  void end();

 private:
  void standIn();

  PanelWindow& window_;
  std::function<QRect()> iconGeometry_;
  std::function<void()> closedWithoutIcon_;
  QTimer missing_;
  std::optional<bool> isTrayShown_;
  bool isAwaited_ = false; // open the panel when the tray state is known
  bool hasEnded_ = false;
};

} // namespace sonvel::ui
