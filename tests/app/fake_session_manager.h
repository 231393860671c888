#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QList>
#include <QObject>
#include <QStringList>
#include <utility>

namespace sonvel::testing {

class FakeSessionClient : public QObject {
  Q_OBJECT
  Q_CLASSINFO("D-Bus Interface", "org.gnome.SessionManager.ClientPrivate")

 public:
  // NOLINTNEXTLINE(readability-identifier-naming): the interface's name
  Q_SCRIPTABLE void EndSessionResponse(bool agrees, const QString& /*reason*/) { responses.append(agrees); }

  QList<bool> responses;
};

/// The side of org.gnome.SessionManager that one client sees. Notes what is asked of it.
class FakeSessionManager : public QObject {
  Q_OBJECT
  Q_CLASSINFO("D-Bus Interface", "org.gnome.SessionManager")

 public:
  explicit FakeSessionManager(QDBusConnection bus)
      : bus_(std::move(bus)) {
    bus_.registerObject("/org/gnome/SessionManager", this, QDBusConnection::ExportScriptableInvokables);
    bus_.registerObject(kClient, &client_, QDBusConnection::ExportScriptableInvokables);
    bus_.registerService("org.gnome.SessionManager");
  }

  // NOLINTNEXTLINE(readability-identifier-naming): the interface's name
  Q_SCRIPTABLE QDBusObjectPath RegisterClient(const QString& application, const QString& startupId) {
    registrations_ << application + " " + startupId;
    return QDBusObjectPath(kClient);
  }

  void tellClient(const QString& signal, const QVariantList& arguments) {
    QDBusMessage message =
        QDBusMessage::createSignal(kClient, "org.gnome.SessionManager.ClientPrivate", signal);
    message.setArguments(arguments);
    bus_.send(message);
  }

  [[nodiscard]] const QStringList& registrations() const { return registrations_; }

  [[nodiscard]] const QList<bool>& responses() const { return client_.responses; }

 private:
  static constexpr const char* kClient = "/org/gnome/SessionManager/Client1";

  QDBusConnection bus_;
  FakeSessionClient client_;
  QStringList registrations_;
};

} // namespace sonvel::testing
