#pragma once

#include <QDBusConnection>
#include <QDBusPendingCallWatcher>
#include <QDBusServiceWatcher>
#include <QDBusVariant>
#include <QMap>
#include <QObject>
#include <QStringList>
#include <QVariantMap>
#include <functional>
#include <memory>

namespace sonvel::desktop {

/// Groups of settings of the desktop portal. Read when this object is created and whenever the portal
/// appears; changes are followed. Callbacks come through the event loop of the creating thread. The
/// constructor may wait for the bus, never for the portal; without a portal there are no callbacks.
class PortalSettings final : public QObject {
  Q_OBJECT

 public:
  using Groups = QMap<QString, QVariantMap>; ///< values by group and key

  struct News {
    std::function<void(const Groups& groups)> all; ///< the complete settings; missing ones are unset
    std::function<void(const QString& group, const QString& key, const QVariant& value)>
        one; ///< one changed value, of any group
  };

  PortalSettings(const QDBusConnection& bus, QStringList groups, News news);

 private Q_SLOTS:
  void settingChanged(const QString& group, const QString& key, const QDBusVariant& value);

 private:
  void readAll();
  void takeAnswer();

  QDBusConnection bus_;
  const QStringList groups_;
  const News news_;
  QDBusServiceWatcher watcher_;
  std::unique_ptr<QDBusPendingCallWatcher> answer_; ///< to the latest query
};

} // namespace sonvel::desktop
