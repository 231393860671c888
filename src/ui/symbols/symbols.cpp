#include "ui/symbols/symbols.h"

#include <QByteArray>
#include <QFile>
#include <QPainter>
#include <QSvgRenderer>
#include <algorithm>

namespace sonvel {
namespace {

/// The SVG in opaque `color`; empty if there is none.
QByteArray drawing(const QString& name, const QColor& color) {
  QFile file(QStringLiteral(":/sonvel/symbols/%1.svg").arg(name));
  if (!file.open(QIODevice::ReadOnly)) {
    qWarning("There is no symbol \"%s\".", qUtf8Printable(name));
    return {};
  }
  return file.readAll().replace("currentColor", color.name(QColor::HexRgb).toLatin1());
}

QRectF squareIn(QSize size) {
  const int side = std::min(size.width(), size.height());
  return QRectF((size.width() - side) / 2.0, (size.height() - side) / 2.0, side, side);
}

} // namespace

QImage symbolImage(const QString& name, const QColor& color, QSize sizeInPixels) {
  const auto svg = drawing(name, color);
  if (svg.isEmpty() || sizeInPixels.isEmpty()) return {};

  QImage image(sizeInPixels, QImage::Format_ARGB32_Premultiplied);
  image.fill(Qt::transparent);
  QSvgRenderer renderer(svg);
  QPainter painter(&image);
  renderer.render(&painter, squareIn(sizeInPixels));
  if (color.alpha() < 255) { // applied to the whole image, so that overlapping strokes do not show
    painter.setCompositionMode(QPainter::CompositionMode_DestinationIn);
    painter.fillRect(image.rect(), QColor(0, 0, 0, color.alpha()));
  }
  return image;
}

} // namespace sonvel
