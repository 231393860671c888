#include "ui/shell/status_item.h"

#include <QCoreApplication>
#include <QDBusArgument>
#include <QDBusMetaType>
#include <QImage>
#include <QtEndian>
#include <array>
#include <cstdlib>

namespace sonvel::ui {
namespace {

constexpr int kWheelStep = 120;
constexpr std::array kSizesInPixels{16, 22, 24, 32, 48};

TrayPicture pictureOf(const QIcon& icon, int size) {
  const QImage image = icon.pixmap(QSize(size, size), 1.0).toImage().convertToFormat(QImage::Format_ARGB32);
  TrayPicture picture{image.width(), image.height(), {}};
  for (int y = 0; y < image.height(); ++y)
    for (int x = 0; x < image.width(); ++x) {
      const auto point = qToBigEndian(image.pixel(x, y));
      picture.points.append(reinterpret_cast<const char*>(&point), sizeof point);
    }
  return picture;
}

} // namespace

QDBusArgument& operator<<(QDBusArgument& argument, const TrayPicture& picture) {
  argument.beginStructure();
  argument << picture.width << picture.height << picture.points;
  argument.endStructure();
  return argument;
}

const QDBusArgument& operator>>(const QDBusArgument& argument, TrayPicture& picture) {
  argument.beginStructure();
  argument >> picture.width >> picture.height >> picture.points;
  argument.endStructure();
  return argument;
}

QDBusArgument& operator<<(QDBusArgument& argument, const TrayToolTip& toolTip) {
  argument.beginStructure();
  argument << toolTip.icon << toolTip.pictures << toolTip.title << toolTip.text;
  argument.endStructure();
  return argument;
}

const QDBusArgument& operator>>(const QDBusArgument& argument, TrayToolTip& toolTip) {
  argument.beginStructure();
  argument >> toolTip.icon >> toolTip.pictures >> toolTip.title >> toolTip.text;
  argument.endStructure();
  return argument;
}

StatusItem::StatusItem(QObject& exported, const QString& menu, TrayActions actions)
    : QDBusAbstractAdaptor(&exported)
    , menu_(menu)
    , actions_(std::move(actions)) {
  qDBusRegisterMetaType<TrayPicture>();
  qDBusRegisterMetaType<TrayPictures>();
  qDBusRegisterMetaType<TrayToolTip>();
}

void StatusItem::setIcon(const QIcon& icon) {
  icon_ = icon;
  Q_EMIT NewIcon();
}

void StatusItem::setToolTip(const QString& text) {
  if (text == toolTip_) return;
  toolTip_ = text;
  Q_EMIT NewToolTip();
}

QString StatusItem::title() const {
  return QCoreApplication::applicationName();
}

TrayPictures StatusItem::pictures() const {
  TrayPictures pictures;
  for (const int size : kSizesInPixels)
    if (auto picture = pictureOf(icon_, size); picture.width > 0) pictures += std::move(picture);
  return pictures;
}

// Qt reads it from here when a window asks to be raised.
void StatusItem::ProvideXdgActivationToken(const QString& token) {
  qputenv("XDG_ACTIVATION_TOKEN", token.toUtf8());
}

void StatusItem::Scroll(int delta, const QString& orientation) {
  if (orientation.compare(QLatin1String("horizontal"), Qt::CaseInsensitive) == 0) return;
  turned_ += delta;
  const auto [steps, rest] = std::div(turned_, kWheelStep);
  turned_ = rest;
  if (steps != 0) actions_.wheelTurned(steps);
}

} // namespace sonvel::ui
