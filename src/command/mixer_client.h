#pragma once

#include <QDBusConnection>
#include <QString>
#include <QVariantList>
#include <QVariantMap>
#include <stdexcept>

namespace sonvel::command {

/// Exit codes of the commands.
enum ExitCode {
  kDone = 0,
  kFailed = 1,        ///< any other reason
  kNoAnswer = 2,      ///< the running Sonvel does not answer
  kNotRunning = 3,    ///< no Sonvel runs in this session
  kNotFound = 4,      ///< no application or device has this name
  kAmbiguous = 5,     ///< several have this name
  kNotPermitted = 6,  ///< Sonvel may not control sound, or the caller is in a sandbox
  kNotAdjustable = 7, ///< the output device has no volume
  kWrongUsage = 64,
};

/// Ends a command with an exit code; the text is shown to the user.
class Failure final : public std::runtime_error {
 public:
  Failure(ExitCode code, const QString& text)
      : std::runtime_error(text.toStdString())
      , code_(code) {}

  ExitCode code() const noexcept { return code_; }

 private:
  ExitCode code_;
};

/// The running Sonvel of this session, reached by D-Bus. Each member blocks for the answer, some seconds at
/// most, and throws Failure. Needs a QCoreApplication.
class MixerClient {
 public:
  /// `service` is the program's bus name.
  explicit MixerClient(QString service);

  /// Calls a method of the mixer and returns its results.
  QVariantList call(const QString& method, const QVariantList& arguments = {}) const;

  /// All properties by name; lists hold QVariantMap.
  QVariantMap properties() const;

  const QString& service() const noexcept { return service_; }

  const QDBusConnection& bus() const noexcept { return bus_; }

 private:
  QVariantList ask(QLatin1String interface, const QString& method, const QVariantList& arguments) const;

  QString service_;
  QDBusConnection bus_;
};

/// Decodes the reply to GetAll into the form of MixerClient::properties.
QVariantMap readProperties(const QVariant& reply);

} // namespace sonvel::command
