#include "ui/icons/app_icon_provider.h"

#include <QGuiApplication>
#include <QPainter>
#include <QPixmap>
#include <QStringList>
#include <QThread>
#include <QUrl>
#include <cmath>

namespace sonvel {
namespace {

constexpr int kSideInPixels = 64; ///< if no size is requested

struct Request {
  std::int32_t pid = 0;
  std::optional<std::string> bundleID;
  std::optional<std::string> parentBundleID;
  int grayPercent = 0;
};

std::optional<std::string> decoded(const QString& part) {
  if (part.isEmpty()) return std::nullopt;
  return QUrl::fromPercentEncoding(part.toUtf8()).toStdString();
}

std::optional<Request> parse(const QString& id) {
  const auto parts = id.split(QLatin1Char('/'));
  if (parts.size() != 4) return std::nullopt;
  bool isPid = false;
  bool isPercent = false;
  const Request request{.pid = parts[0].toInt(&isPid),
                        .bundleID = decoded(parts[1]),
                        .parentBundleID = decoded(parts[2]),
                        .grayPercent = parts[3].toInt(&isPercent)};
  if (!isPid || !isPercent || request.grayPercent < 0 || request.grayPercent > 100) return std::nullopt;
  return request;
}

bool fills(QSize picture, QSize size) {
  return picture.width() >= size.width() || picture.height() >= size.height();
}

/// The icon's picture of this size, or the next larger one: shrinking blurs less than enlarging.
QImage pictureFor(const QIcon& icon, QSize sizeInPixels) {
  auto nearest = icon.pixmap(sizeInPixels, 1.0).toImage();
  if (fills(nearest.size(), sizeInPixels)) return nearest;
  QSize larger;
  for (const auto& size : icon.availableSizes())
    if (fills(size, sizeInPixels) && (larger.isEmpty() || size.width() < larger.width())) larger = size;
  return larger.isEmpty() ? nearest : icon.pixmap(larger, 1.0).toImage();
}

QImage drawn(const QIcon& icon, QSize sizeInPixels) {
  QImage canvas(sizeInPixels, QImage::Format_ARGB32_Premultiplied);
  canvas.fill(Qt::transparent);
  auto picture = pictureFor(icon, sizeInPixels);
  if (picture.isNull()) return canvas;

  const auto fitting = picture.size().scaled(sizeInPixels, Qt::KeepAspectRatio);
  if (picture.size() != fitting)
    picture = picture.scaled(fitting, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
  QRect place({}, fitting);
  place.moveCenter(canvas.rect().center());
  QPainter(&canvas).drawImage(place, picture);
  return canvas;
}

/// Reduces the saturation by `percent`, keeping the brightness.
void desaturate(QImage& image, int percent) {
  const double gray = percent / 100.0;
  const auto mix = [gray](int channel, double luma) {
    return static_cast<int>(std::lround(channel * (1 - gray) + luma * gray));
  };
  for (int y = 0; y < image.height(); ++y) {
    auto* const line = reinterpret_cast<QRgb*>(image.scanLine(y));
    for (int x = 0; x < image.width(); ++x) {
      const auto pixel = line[x]; // premultiplied, so luma is premultiplied too
      const double luma = 0.2126 * qRed(pixel) + 0.7152 * qGreen(pixel) + 0.0722 * qBlue(pixel);
      line[x] =
          qRgba(mix(qRed(pixel), luma), mix(qGreen(pixel), luma), mix(qBlue(pixel), luma), qAlpha(pixel));
    }
  }
}

} // namespace

AppIconProvider::AppIconProvider(AppIconCache& cache)
    : QQuickImageProvider(QQuickImageProvider::Image)
    , cache_(cache) {}

QImage AppIconProvider::requestImage(const QString& id, QSize* size, const QSize& requestedSize) {
  const auto request = parse(id);
  const bool isMainThread = QThread::currentThread() == QCoreApplication::instance()->thread();
  if (!request || !isMainThread) {
    qWarning("No application icon for \"%s\": %s.", qUtf8Printable(id),
             request ? "it must not be loaded asynchronously" : "that is not an id");
    return {};
  }
  const QSize sizeInPixels(requestedSize.width() > 0 ? requestedSize.width() : kSideInPixels,
                           requestedSize.height() > 0 ? requestedSize.height() : kSideInPixels);
  auto image = drawn(cache_.icon(request->bundleID, request->parentBundleID, request->pid), sizeInPixels);
  if (request->grayPercent > 0) desaturate(image, request->grayPercent);
  if (size != nullptr) *size = image.size();
  return image;
}

} // namespace sonvel
