// Saves what a display shows as a picture, without the empty screen around it: screen-picture FILE
#include <QGuiApplication>
#include <QImage>
#include <QPixmap>
#include <QScreen>

namespace {

/// Everything that is not of the screen's empty black.
QRect filledPart(const QImage& image) {
  QRect filled;
  for (int y = 0; y < image.height(); ++y)
    for (int x = 0; x < image.width(); ++x)
      if (image.pixel(x, y) != qRgb(0, 0, 0)) filled |= QRect(x, y, 1, 1);
  return filled;
}

} // namespace

int main(int argc, char** argv) {
  qunsetenv("QT_SCALE_FACTOR"); // the display's own pixels
  const QGuiApplication application(argc, argv);
  const QImage image = QGuiApplication::primaryScreen()->grabWindow(0).toImage();
  const QStringList arguments = QGuiApplication::arguments();
  if (arguments.size() != 2) return 2;
  return image.copy(filledPart(image)).save(arguments[1]) ? 0 : 1;
}
