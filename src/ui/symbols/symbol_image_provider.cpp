#include "ui/symbols/symbol_image_provider.h"

#include "ui/symbols/symbols.h"

namespace sonvel {
namespace {

constexpr int kGridSide = 24;

/// In `sourceSize` one or both sides may be unset.
QSize sizeFor(const QSize& requested) {
  const int side = requested.width() > 0 ? requested.width() : requested.height();
  if (side <= 0) return {kGridSide, kGridSide};
  return {side, requested.height() > 0 ? requested.height() : side};
}

} // namespace

SymbolImageProvider::SymbolImageProvider()
    : QQuickImageProvider(QQuickImageProvider::Image) {}

QImage SymbolImageProvider::requestImage(const QString& id, QSize* size, const QSize& requestedSize) {
  const auto slash = id.indexOf(QLatin1Char('/'));
  const QColor color(QLatin1Char('#') + id.mid(slash + 1));
  QImage image;
  if (slash > 0 && color.isValid())
    image = symbolImage(id.left(slash), color, sizeFor(requestedSize));
  else
    qWarning("\"%s\" is not a symbol's name and colour.", qUtf8Printable(id));
  if (size != nullptr) *size = image.size();
  return image;
}

} // namespace sonvel
