#include "panel/tray_host.h"

#include <QDBusArgument>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusServiceWatcher>
#include <QImage>
#include <QMap>
#include <QtEndian>

namespace sonvel::testing {

namespace {

const QString kService = QStringLiteral("org.kde.StatusNotifierWatcher");
const QString kPath = QStringLiteral("/StatusNotifierWatcher");
const QString kItemPath = QStringLiteral("/StatusNotifierItem");
const QString kItemInterface = QStringLiteral("org.kde.StatusNotifierItem");
const QString kMenuInterface = QStringLiteral("com.canonical.dbusmenu");

QVariantList call(const QDBusConnection& bus, const QString& service, const QString& path,
                  const QString& interface, const QString& method, const QVariantList& arguments) {
  QDBusMessage message = QDBusMessage::createMethodCall(service, path, interface, method);
  message.setArguments(arguments);
  return bus.call(message, QDBus::Block, 5000).arguments();
}

/// The identifiers of a menu's entries by their labels; (ia{sv}av) is an entry with its own entries.
void readEntries(const QDBusArgument& entry, QMap<QString, int>& entries) {
  int id = 0;
  QVariantMap properties;
  QVariantList children;
  entry.beginStructure();
  entry >> id >> properties >> children;
  entry.endStructure();
  const QString label = properties.value("label").toString();
  if (!label.isEmpty()) entries.insert(label, id);
  for (const QVariant& child : children)
    readEntries(child.value<QDBusArgument>(), entries);
}

QMap<QString, int> menuEntries(const QDBusConnection& bus, const QString& item, const QString& path) {
  QMap<QString, int> entries;
  const QVariantList layout = call(bus, item, path, kMenuInterface, "GetLayout", {0, -1, QStringList()});
  if (layout.size() == 2) readEntries(layout.at(1).value<QDBusArgument>(), entries);
  return entries;
}

// a(iiay): width, height and pixels, alpha first. The last of them.
QImage readPictures(const QDBusArgument& pictures) {
  QImage last;
  pictures.beginArray();
  while (!pictures.atEnd()) {
    int width = 0;
    int height = 0;
    QByteArray pixels;
    pictures.beginStructure();
    pictures >> width >> height >> pixels;
    pictures.endStructure();
    last = QImage(width, height, QImage::Format_ARGB32);
    for (int y = 0; y < height; ++y)
      qFromBigEndian<quint32>(pixels.constData() + qsizetype{4} * y * width, width, last.scanLine(y));
  }
  pictures.endArray();
  return last;
}

} // namespace

TrayHost::TrayHost(const QDBusConnection& bus, bool isHostRegistered)
    : bus_(bus)
    , isHostRegistered_(isHostRegistered) {
  bus_.registerObject(kPath, this,
                      QDBusConnection::ExportScriptableInvokables | QDBusConnection::ExportScriptableSignals |
                          QDBusConnection::ExportAllProperties);
  bus_.registerService(kService);
}

TrayHost::~TrayHost() {
  bus_.unregisterService(kService);
  bus_.unregisterObject(kPath);
}

void TrayHost::setHostRegistered(bool isRegistered) {
  isHostRegistered_ = isRegistered;
  if (isRegistered) {
    Q_EMIT StatusNotifierHostRegistered();
  } else {
    Q_EMIT StatusNotifierHostUnregistered();
  }
}

QVariant TrayHost::property(const QString& item, const QString& name) const {
  const QVariantList answer =
      call(bus_, item, kItemPath, "org.freedesktop.DBus.Properties", "Get", {kItemInterface, name});
  return answer.isEmpty() ? QVariant() : answer.at(0).value<QDBusVariant>().variant();
}

// (sa(iiay)ss): an icon's name, its pictures, the title and the text
QString TrayHost::toolTipTitle(const QString& item) const {
  const auto toolTip = property(item, "ToolTip").value<QDBusArgument>();
  QString icon;
  QString title;
  toolTip.beginStructure();
  toolTip >> icon;
  readPictures(toolTip);
  toolTip >> title;
  return title;
}

QColor TrayHost::color(const QString& item) const {
  const QImage picture = readPictures(property(item, "IconPixmap").value<QDBusArgument>());
  return picture.isNull() ? QColor() : picture.pixelColor(picture.rect().center());
}

void TrayHost::activate(const QString& item) const {
  call(bus_, item, kItemPath, kItemInterface, "Activate", {0, 0});
}

QStringList TrayHost::menu(const QString& item) const {
  return menuEntries(bus_, item, property(item, "Menu").value<QDBusObjectPath>().path()).keys();
}

bool TrayHost::choose(const QString& item, const QString& label) const {
  const QString path = property(item, "Menu").value<QDBusObjectPath>().path();
  const QMap<QString, int> entries = menuEntries(bus_, item, path);
  if (!entries.contains(label)) return false;
  const auto nothing = QVariant::fromValue(QDBusVariant(QString()));
  call(bus_, item, path, kMenuInterface, "Event", {entries.value(label), "clicked", nothing, 0U});
  return true;
}

void TrayHost::RegisterStatusNotifierItem(const QString& item) {
  if (items_.contains(item)) return;
  items_ << item;
  auto* const owner = // NOLINT(cppcoreguidelines-owning-memory): a child
      new QDBusServiceWatcher(item, bus_, QDBusServiceWatcher::WatchForUnregistration, this);
  connect(owner, &QDBusServiceWatcher::serviceUnregistered, this, &TrayHost::forget);
  connect(owner, &QDBusServiceWatcher::serviceUnregistered, owner, &QObject::deleteLater);
  Q_EMIT StatusNotifierItemRegistered(item);
}

void TrayHost::RegisterStatusNotifierHost(const QString& /*host*/) {
  setHostRegistered(true);
}

void TrayHost::forget(const QString& item) {
  items_.removeAll(item);
  Q_EMIT StatusNotifierItemUnregistered(item);
}

} // namespace sonvel::testing
