#include "app/session_manager_client.h"

#include <QDBusObjectPath>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <utility>

namespace sonvel {

namespace {

const QString kService = QStringLiteral("org.gnome.SessionManager");
const QString kPath = QStringLiteral("/org/gnome/SessionManager");
const QString kPrivateInterface = QStringLiteral("org.gnome.SessionManager.ClientPrivate");
const QString kApplicationId = QStringLiteral("com.quellmarsh.sonvel");
constexpr const char* kStartupId = "DESKTOP_AUTOSTART_ID";
constexpr int kAnswerPatience = 500; // ms

} // namespace

SessionManagerClient::SessionManagerClient(std::function<void()> endSession, QDBusConnection bus)
    : endSession_(std::move(endSession))
    , bus_(std::move(bus)) {
  if (!bus_.isConnected()) return;
  QDBusMessage request =
      QDBusMessage::createMethodCall(kService, kPath, kService, QStringLiteral("RegisterClient"));
  request.setAutoStartService(false);
  request << kApplicationId << qEnvironmentVariable(kStartupId);
  qunsetenv(kStartupId); // must not be inherited by children

  auto* const watcher = new QDBusPendingCallWatcher(bus_.asyncCall(request), this); // NOLINT: its parent's
  connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher] {
    const QDBusPendingReply<QDBusObjectPath> reply = *watcher;
    if (reply.isValid()) listenAt(reply.value().path());
    watcher->deleteLater();
  });
}

SessionManagerClient::~SessionManagerClient() {
  tellDone();
}

void SessionManagerClient::listenAt(const QString& path) {
  path_ = path;
  bus_.connect(kService, path, kPrivateInterface, QStringLiteral("QueryEndSession"), this,
               SLOT(onQueryEndSession(uint)));
  bus_.connect(kService, path, kPrivateInterface, QStringLiteral("EndSession"), this,
               SLOT(onEndSession(uint)));
  bus_.connect(kService, path, kPrivateInterface, QStringLiteral("Stop"), this, SLOT(onStop()));
}

QDBusMessage SessionManagerClient::agreement() const {
  QDBusMessage answer = QDBusMessage::createMethodCall(kService, path_, kPrivateInterface,
                                                       QStringLiteral("EndSessionResponse"));
  answer << true << QString();
  return answer;
}

// Another client may still object, so nothing ends yet.
void SessionManagerClient::onQueryEndSession(uint /*flags*/) {
  bus_.send(agreement());
}

void SessionManagerClient::onEndSession(uint /*flags*/) {
  isAwaited_ = true;
  endSession_();
}

void SessionManagerClient::onStop() {
  endSession_();
}

// Blocking, so that the answer is sent before the process ends.
void SessionManagerClient::tellDone() {
  if (std::exchange(isAwaited_, false)) bus_.call(agreement(), QDBus::Block, kAnswerPatience);
}

} // namespace sonvel
