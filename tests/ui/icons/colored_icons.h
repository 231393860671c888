#pragma once

#include "desktop/temporary_folder.h"

#include <QIcon>
#include <QImage>
#include <QPixmap>
#include <string>

namespace sonvel {

/// A folder with pictures of one colour each, which tell where an icon came from.
class ColoredIcons {
 public:
  /// Writes a PNG picture of that colour. Returns its path.
  std::string write(const std::string& relative, const char* color, QSize size = {32, 32}) const {
    auto path = folder_.write(relative, "");
    QImage picture(size, QImage::Format_ARGB32);
    picture.fill(QColor(color));
    EXPECT_TRUE(picture.save(QString::fromStdString(path), "PNG"));
    return path;
  }

  const desktop::TemporaryFolder& folder() const { return folder_; }

 private:
  desktop::TemporaryFolder folder_;
};

/// "#rrggbb" of the middle of the icon, "none" if it is null.
inline std::string colorOf(const QIcon& icon, int sideInPixels = 16) {
  if (icon.isNull()) return "none";
  const auto image = icon.pixmap(QSize(sideInPixels, sideInPixels), 1.0).toImage();
  return image.pixelColor(image.rect().center()).name().toStdString();
}

} // namespace sonvel
