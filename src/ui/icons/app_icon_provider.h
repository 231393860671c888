#pragma once

#include "ui/icons/app_icon_cache.h"

#include <QQuickImageProvider>

namespace sonvel {

/// Provides application icons to QML: `image://app-icon/<pid>/<bundle identifier>/<parent's bundle
/// identifier>/<percent of gray>`, both identifiers percent-encoded, empty if missing.
///
/// An image has exactly the requested `sourceSize` (device pixels in Qt Quick), with the icon as large as
/// fits. Without an icon it is transparent; for an invalid id it is empty, with a warning. Main thread: an
/// `asynchronous` Image gets nothing, and a warning.
class AppIconProvider final : public QQuickImageProvider {
 public:
  static constexpr auto kID = "app-icon"; ///< for QQmlEngine::addImageProvider

  /// `cache` must outlive this object.
  explicit AppIconProvider(AppIconCache& cache);

  QImage requestImage(const QString& id, QSize* size, const QSize& requestedSize) override;

 private:
  AppIconCache& cache_;
};

} // namespace sonvel
