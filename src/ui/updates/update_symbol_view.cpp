#include "ui/updates/update_symbol_view.h"

#include <QPainter>
#include <QPainterPath>

namespace sonvel {
namespace {

/// The strokes of a sign in a square of 24 units.
QPainterPath sign(const QString& name) {
  QPainterPath path;
  if (name == QLatin1String("check")) {
    path.moveTo(7, 12.5);
    path.lineTo(10.6, 16);
    path.lineTo(17, 8.8);
  } else if (name == QLatin1String("exclamation")) {
    path.moveTo(12, 6.8);
    path.lineTo(12, 12.8);
    path.moveTo(12, 16.8);
    path.lineTo(12, 16.81); // a dot, by the round ends of the pen
  } else {
    path.moveTo(12, 6.5);
    path.lineTo(12, 17);
    path.moveTo(7.8, 12.9);
    path.lineTo(12, 17.1);
    path.lineTo(16.2, 12.9);
  }
  return path;
}

} // namespace

UpdateSymbolView::UpdateSymbolView(QQuickItem* parent)
    : QQuickPaintedItem(parent) {}

void UpdateSymbolView::paint(QPainter* painter) {
  painter->setRenderHint(QPainter::Antialiasing);
  const double side = qMin(width(), height());
  painter->scale(side / 24, side / 24);
  painter->setPen(Qt::NoPen);
  painter->setBrush(color_);
  painter->drawEllipse(QRectF(0.5, 0.5, 23, 23));
  painter->setBrush(Qt::NoBrush);
  painter->setPen(QPen(Qt::white, 2, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
  painter->drawPath(sign(name_));
}

void UpdateSymbolView::setName(const QString& name) {
  name_ = name;
  update();
}

void UpdateSymbolView::setColor(const QColor& color) {
  color_ = color;
  update();
}

} // namespace sonvel
