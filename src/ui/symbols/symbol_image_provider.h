#pragma once

#include <QQuickImageProvider>

namespace sonvel {

/// Gives QML the symbols: `image://symbol/<name>/<rrggbb>`, or `<aarrggbb>` for a colour that is not opaque.
///
/// An image is as large as the `sourceSize` that is asked for, which Qt Quick gives in device pixels, so that
/// it is sharp; a wrong name or colour gives an empty image and a warning. Any thread.
class SymbolImageProvider final : public QQuickImageProvider {
 public:
  static constexpr auto kID = "symbol"; ///< for QQmlEngine::addImageProvider

  SymbolImageProvider();

  QImage requestImage(const QString& id, QSize* size, const QSize& requestedSize) override;
};

} // namespace sonvel
