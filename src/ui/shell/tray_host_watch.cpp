#include "ui/shell/tray_host_watch.h"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusVariant>

namespace sonvel::ui {

namespace {

const QString kService = QStringLiteral("org.kde.StatusNotifierWatcher");
const QString kPath = QStringLiteral("/StatusNotifierWatcher");
const QString kProperties = QStringLiteral("org.freedesktop.DBus.Properties");

} // namespace

TrayHostWatch::TrayHostWatch(const QDBusConnection& bus)
    : bus_(bus)
    , owner_(kService, bus, QDBusServiceWatcher::WatchForOwnerChange) {
  if (!bus_.isConnected()) {
    isHosted_ = false;
    return;
  }
  connect(&owner_, &QDBusServiceWatcher::serviceOwnerChanged, this, &TrayHostWatch::ask);
  for (const char* signal : {"StatusNotifierHostRegistered", "StatusNotifierHostUnregistered"})
    bus_.connect(kService, kPath, kService, QString::fromLatin1(signal), this, SLOT(ask()));
  ask();
}

// A new query, whatever the event was.
void TrayHostWatch::ask() {
  QDBusMessage question = QDBusMessage::createMethodCall(kService, kPath, kProperties, QStringLiteral("Get"));
  question.setAutoStartService(false);
  question << kService << QStringLiteral("IsStatusNotifierHostRegistered");

  delete question_; // NOLINT(cppcoreguidelines-owning-memory): a child with an outdated answer
  question_ = new QDBusPendingCallWatcher(bus_.asyncCall(question), this); // NOLINT: a child
  connect(question_, &QDBusPendingCallWatcher::finished, this, [this](QDBusPendingCallWatcher* answered) {
    const QDBusPendingReply<QDBusVariant> answer = *answered;
    question_ = nullptr;
    answered->deleteLater();
    set(answer.isValid() && answer.value().variant().toBool());
  });
}

void TrayHostWatch::set(bool isHosted) {
  if (isHosted_ == isHosted) return;
  isHosted_ = isHosted;
  Q_EMIT changed(isHosted);
}

} // namespace sonvel::ui
