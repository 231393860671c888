#include "app/single_instance.h"

#include "app/single_instance_service.h"

#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusReply>
#include <QDBusServiceWatcher>
#include <QDeadlineTimer>
#include <QEventLoop>
#include <QTimer>
#include <utility>

namespace sonvel {

namespace {

const QString kOwnService = QStringLiteral("com.quellmarsh.sonvel");
const QString kOwnPath = QStringLiteral("/com/quellmarsh/sonvel");
const QString kApplicationInterface = QStringLiteral("org.freedesktop.Application");

constexpr const char* kWaylandToken = "activation-token";
constexpr const char* kX11Token = "desktop-startup-id";

QVariantMap toPlatformData(const LaunchToken& token) {
  QVariantMap data;
  if (!token.wayland.isEmpty()) data.insert(kWaylandToken, token.wayland);
  if (!token.x11.isEmpty()) data.insert(kX11Token, token.x11);
  return data;
}

} // namespace

void ApplicationAdaptor::Activate(const QVariantMap& platformData) {
  service_.show({.wayland = platformData.value(kWaylandToken).toString(),
                 .x11 = platformData.value(kX11Token).toString()});
}

SingleInstance::SingleInstance(InstanceRequests requests, LaunchToken token, QDBusConnection bus)
    : token_(std::move(token))
    , bus_(std::move(bus))
    , service_(std::make_unique<SingleInstanceService>(std::move(requests))) {
  new ApplicationAdaptor(*service_); // NOLINT(cppcoreguidelines-owning-memory): a child
}

SingleInstance::~SingleInstance() {
  if (!isFirst_) return;
  bus_.interface()->unregisterService(kOwnService);
  bus_.unregisterObject(kOwnPath);
}

SingleInstance::Outcome SingleInstance::acquire() {
  if (!bus_.isConnected()) return Outcome::noBus;

  const QDeadlineTimer deadline(kPatience);
  do {
    if (takeName()) return Outcome::first;
    switch (askFirst(std::chrono::milliseconds(deadline.remainingTime()))) {
    case Answer::shown:
      return Outcome::toldTheFirst;
    case Answer::none:
      return Outcome::firstDoesNotAnswer;
    case Answer::leaving:
      waitForName(std::chrono::milliseconds(deadline.remainingTime()));
    }
  } while (!deadline.hasExpired());
  return Outcome::firstDoesNotAnswer;
}

// Registers the object before the name, so that no caller finds the name without the object.
bool SingleInstance::takeName() {
  bus_.registerObject(kOwnPath, service_.get(),
                      QDBusConnection::ExportScriptableInvokables | QDBusConnection::ExportAdaptors);
  const QDBusReply<QDBusConnectionInterface::RegisterServiceReply> reply =
      bus_.interface()->registerService(kOwnService, QDBusConnectionInterface::DontQueueService,
                                        QDBusConnectionInterface::DontAllowReplacement);
  isFirst_ = reply.isValid() && reply.value() == QDBusConnectionInterface::ServiceRegistered;
  if (!isFirst_) bus_.unregisterObject(kOwnPath);
  return isFirst_;
}

SingleInstance::Answer SingleInstance::askFirst(std::chrono::milliseconds within) {
  QDBusMessage request = QDBusMessage::createMethodCall(kOwnService, kOwnPath, kApplicationInterface,
                                                        QStringLiteral("Activate"));
  request << toPlatformData(token_);
  request.setAutoStartService(false);
  const QDBusMessage reply = bus_.call(request, QDBus::Block, static_cast<int>(within.count()));
  if (reply.type() == QDBusMessage::ReplyMessage) return Answer::shown;

  // The first instance may have ended after the call was sent, without reading it.
  const bool isGone = !bus_.interface()->isServiceRegistered(kOwnService).value();
  return isGone || reply.errorName() == QLatin1String(SingleInstanceService::kLeavingError) ? Answer::leaving
                                                                                            : Answer::none;
}

void SingleInstance::waitForName(std::chrono::milliseconds within) {
  QEventLoop loop;
  const QDBusServiceWatcher watcher(kOwnService, bus_, QDBusServiceWatcher::WatchForUnregistration);
  QObject::connect(&watcher, &QDBusServiceWatcher::serviceUnregistered, &loop, &QEventLoop::quit);
  QTimer::singleShot(within, &loop, &QEventLoop::quit);
  if (bus_.interface()->isServiceRegistered(kOwnService).value()) loop.exec();
}

} // namespace sonvel
