#pragma once

#include "ui/icons/app_icon_cache.h"

#include <QQuickImageProvider>

namespace sonvel {

/// Gives QML the applications' icons:
/// `image://app-icon/<pid>/<bundle identifier>/<parent's bundle identifier>/<percent of gray>`, both
/// identifiers percent-encoded, and empty where there is none.
///
/// An image has just the `sourceSize` that is asked for, which Qt Quick gives in device pixels, with the icon
/// as large as fits. Where there is no icon at all it is transparent; for a wrong id it is empty, with a
/// warning. Main thread: an Image that is `asynchronous` gets nothing, and a warning.
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
