#include "command/mixer_client.h"

#include "remote/mixer_interface.h"

#include <QDBusArgument>
#include <QDBusMessage>
#include <QHash>
#include <utility>

namespace sonvel::command {
namespace {

/// As long as a stuck sound server can delay the program.
constexpr int kPatienceMs = 15000;

Failure failureOf(const QDBusMessage& answer) {
  static const QHash<QString, ExitCode> codes{
      {remote::error::kNotFound, kNotFound},
      {remote::error::kAmbiguous, kAmbiguous},
      {remote::error::kNotPermitted, kNotPermitted},
      {remote::error::kAccessDenied, kNotPermitted},
      {remote::error::kNotAdjustable, kNotAdjustable},
      {remote::error::kInvalidArguments, kWrongUsage},
      {remote::error::kLeaving, kNotRunning},
      {QStringLiteral("org.freedesktop.DBus.Error.ServiceUnknown"), kNotRunning},
      {QStringLiteral("org.freedesktop.DBus.Error.NameHasNoOwner"), kNotRunning},
      {QStringLiteral("org.freedesktop.DBus.Error.NoReply"), kNoAnswer}};
  const auto code = codes.value(answer.errorName(), kFailed);
  if (code == kNotRunning) return {code, QStringLiteral("Sonvel is not running in this session")};
  if (code == kNoAnswer) return {code, QStringLiteral("the running Sonvel does not answer")};
  return {code, answer.errorMessage()};
}

} // namespace

MixerClient::MixerClient(QString service)
    : service_(std::move(service))
    , bus_(QDBusConnection::sessionBus()) {
  if (!bus_.isConnected()) throw Failure(kNotRunning, QStringLiteral("there is no session bus"));
}

QVariantList MixerClient::ask(QLatin1String interface, const QString& method,
                              const QVariantList& arguments) const {
  auto question = QDBusMessage::createMethodCall(service_, remote::kPath, interface, method);
  question.setAutoStartService(false);
  question.setArguments(arguments);
  const auto answer = bus_.call(question, QDBus::Block, kPatienceMs);
  if (answer.type() != QDBusMessage::ReplyMessage) throw failureOf(answer);
  return answer.arguments();
}

QVariantList MixerClient::call(const QString& method, const QVariantList& arguments) const {
  return ask(remote::kInterface, method, arguments);
}

QVariantMap MixerClient::properties() const {
  return readProperties(
      ask(remote::kPropertiesInterface, QStringLiteral("GetAll"), {QString(remote::kInterface)}).value(0));
}

QVariantMap readProperties(const QVariant& reply) {
  auto properties = qdbus_cast<QVariantMap>(reply);
  for (const auto& name : {QStringLiteral("Applications"), QStringLiteral("Devices")}) {
    QVariantList list;
    for (const auto& map : qdbus_cast<QList<QVariantMap>>(properties.value(name)))
      list.append(map);
    properties[name] = list;
  }
  return properties;
}

} // namespace sonvel::command
