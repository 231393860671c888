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

/// Groups of settings of the desktop portal, read when this object is made and whenever the portal comes or
/// comes back, and followed in between. Tells its news on the thread that made it, through its event loop.
/// Waits for the bus at most, never for the portal; says nothing as long as there is none.
class PortalSettings final : public QObject {
  Q_OBJECT

 public:
  using Groups = QMap<QString, QVariantMap>; ///< values by group and key

  struct News {
    std::function<void(const Groups& groups)> all; ///< they are these; what is missing is not set
    std::function<void(const QString& group, const QString& key, const QVariant& value)>
        one; ///< of any group
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
  std::unique_ptr<QDBusPendingCallWatcher> answer_; ///< to the latest question
};

} // namespace sonvel::desktop
