#pragma once

#include <QQuickImageProvider>

namespace sonvel {

/// Provides the symbols to QML: `image://symbol/<name>/<rrggbb>`, or `<aarrggbb>` for a translucent colour.
///
/// An image has the requested `sourceSize` (device pixels in Qt Quick); an invalid name or colour gives an
/// empty image and a warning. Any thread.
class SymbolImageProvider final : public QQuickImageProvider {
 public:
  static constexpr auto kID = "symbol"; ///< for QQmlEngine::addImageProvider

  SymbolImageProvider();

  QImage requestImage(const QString& id, QSize* size, const QSize& requestedSize) override;
};

} // namespace sonvel
