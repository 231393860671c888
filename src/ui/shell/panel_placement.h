#pragma once

#include <QList>
#include <QPoint>
#include <QRect>
#include <QSize>

namespace sonvel::ui {

/// A screen as the desktop lays it out, in logical pixels.
struct ScreenArea {
  QRect geometry;  ///< all of it
  QRect available; ///< without the desktop's bars
};

/// Where the panel goes: at the tray icon when the desktop tells where that is (`icon` not empty), else into
/// the corner nearest to the pointer on the pointer's screen. Always wholly in the available area of one
/// screen, cut to it where `size` is larger. Empty when there is no screen. Pure.
[[nodiscard]] QRect panelGeometry(const QList<ScreenArea>& screens, const QRect& icon, const QPoint& pointer,
                                  const QSize& size);

} // namespace sonvel::ui
