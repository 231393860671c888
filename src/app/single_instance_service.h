#pragma once

#include "app/single_instance.h"

#include <QDBusAbstractAdaptor>
#include <QDBusContext>
#include <QDBusError>
#include <QDBusMessage>
#include <QObject>
#include <QVariantMap>
#include <utility>

namespace sonvel {

/// The first instance's object on the bus.
class SingleInstanceService final : public QObject, protected QDBusContext {
  Q_OBJECT
  Q_CLASSINFO("D-Bus Interface", "com.quellmarsh.sonvel")

 public:
  /// The D-Bus error for calls while this process quits.
  static constexpr const char* kLeavingError = "com.quellmarsh.sonvel.Error.Leaving";

  explicit SingleInstanceService(InstanceRequests requests)
      : requests_(std::move(requests)) {}

  // The names are those of the interface.
  Q_SCRIPTABLE void ShowPanel() { // NOLINT(readability-identifier-naming)
    show({});
  }

  void show(const LaunchToken& token) {
    if (isAdmitted() && !requests_.showPanel(token))
      sendErrorReply(kLeavingError, QStringLiteral("Sonvel is about to end"));
  }

  Q_SCRIPTABLE void Quit() { // NOLINT(readability-identifier-naming)
    if (isAdmitted()) requests_.quit();
  }

 private:
  bool isAdmitted() const {
    const bool isAdmitted = requests_.admits(message().service());
    if (!isAdmitted)
      sendErrorReply(QDBusError::AccessDenied, QStringLiteral("not to a program in a sandbox"));
    return isAdmitted;
  }

  InstanceRequests requests_;
};

/// The same for launchers, as DBusActivatable requires.
class ApplicationAdaptor final : public QDBusAbstractAdaptor {
  Q_OBJECT
  Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Application")

 public:
  explicit ApplicationAdaptor(SingleInstanceService& service)
      : QDBusAbstractAdaptor(&service)
      , service_(service) {}

  // The names are those of the interface. NOLINTBEGIN(readability-identifier-naming)
  Q_SLOT void Activate(const QVariantMap& platformData);

  Q_SLOT void Open(const QStringList&, const QVariantMap& platformData) { Activate(platformData); }

  Q_SLOT void ActivateAction(const QString&, const QVariantList&, const QVariantMap& platformData) {
    Activate(platformData);
  }

  // NOLINTEND(readability-identifier-naming)

 private:
  SingleInstanceService& service_;
};

} // namespace sonvel
