#include "ui/shell/panel_placement.h"

#include <algorithm>

namespace sonvel::ui {

namespace {

/// The distance of a point from a rectangle, as width plus height; 0 inside.
int distance(const QRect& rectangle, const QPoint& point) {
  const int x = std::max({rectangle.left() - point.x(), point.x() - rectangle.right(), 0});
  const int y = std::max({rectangle.top() - point.y(), point.y() - rectangle.bottom(), 0});
  return x + y;
}

// Screens of different scales leave gaps, so a point may be on no screen.
const ScreenArea& screenAt(const QList<ScreenArea>& screens, const QPoint& point) {
  return *std::ranges::min_element(
      screens, {}, [&](const ScreenArea& screen) { return distance(screen.geometry, point); });
}

QRect atIcon(const QRect& area, const QRect& icon, const QSize& size) {
  QRect panel(QPoint(), size.boundedTo(area.size()));
  panel.moveCenter(icon.center());
  if (icon.center().y() < area.center().y()) {
    panel.moveTop(icon.bottom() + 1);
  } else {
    panel.moveBottom(icon.top() - 1);
  }
  return within(area, panel);
}

QRect inCorner(const QRect& area, const QPoint& pointer, const QSize& size) {
  QRect panel(area.topLeft(), size.boundedTo(area.size()));
  if (pointer.x() >= area.center().x()) panel.moveRight(area.right());
  if (pointer.y() > area.center().y()) panel.moveBottom(area.bottom());
  return panel;
}

} // namespace

QRect within(const QRect& area, QRect rectangle) {
  rectangle.setSize(rectangle.size().boundedTo(area.size()));
  rectangle.moveLeft(std::clamp(rectangle.left(), area.left(), area.right() - rectangle.width() + 1));
  rectangle.moveTop(std::clamp(rectangle.top(), area.top(), area.bottom() - rectangle.height() + 1));
  return rectangle;
}

QRect panelGeometry(const QList<ScreenArea>& screens, const QRect& icon, const QPoint& pointer,
                    const QSize& size) {
  if (screens.isEmpty()) return {};
  if (!icon.isEmpty()) return atIcon(screenAt(screens, icon.center()).available, icon, size);
  return inCorner(screenAt(screens, pointer).available, pointer, size);
}

} // namespace sonvel::ui
