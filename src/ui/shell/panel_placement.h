#pragma once

#include <QList>
#include <QPoint>
#include <QRect>
#include <QSize>

namespace sonvel::ui {

/// A screen in logical pixels.
struct ScreenArea {
  QRect geometry;  ///< the whole screen
  QRect available; ///< without the desktop's bars
};

/// Moves the rectangle into the area, and cuts it if it is larger. Pure.
[[nodiscard]] QRect within(const QRect& area, QRect rectangle);

/// The panel's position: at the tray icon if the desktop tells its position (`icon` not empty), else in the
/// screen corner nearest to the pointer. Always inside the available area of one screen, cut to it if `size`
/// is larger. Empty without a screen. Pure.
[[nodiscard]] QRect panelGeometry(const QList<ScreenArea>& screens, const QRect& icon, const QPoint& pointer,
                                  const QSize& size);

} // namespace sonvel::ui
