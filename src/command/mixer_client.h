#pragma once

#include <QDBusConnection>
#include <QString>
#include <QVariantList>
#include <QVariantMap>
#include <stdexcept>

namespace sonvel::command {

/// What the process returns for a command.
enum ExitCode {
  kDone = 0,
  kFailed = 1,        ///< for any other reason
  kNoAnswer = 2,      ///< the Sonvel that runs is silent
  kNotRunning = 3,    ///< no Sonvel runs in this session
  kNotFound = 4,      ///< no application or device is called so
  kAmbiguous = 5,     ///< more than one is called so
  kNotPermitted = 6,  ///< Sonvel may not control sound, or the caller is in a sandbox
  kNotAdjustable = 7, ///< the output device has no volume
  kWrongUsage = 64,
};

/// Ends a command; the text is for the user.
class Failure final : public std::runtime_error {
 public:
  Failure(ExitCode code, const QString& text)
      : std::runtime_error(text.toStdString())
      , code_(code) {}

  ExitCode code() const noexcept { return code_; }

 private:
  ExitCode code_;
};

/// The Sonvel that runs in the session, reached by its D-Bus interface. Each member blocks until it has
/// answered, for some seconds at most, and throws Failure. Needs a QCoreApplication.
class MixerClient {
 public:
  /// `service` is the bus name of the program.
  explicit MixerClient(QString service);

  /// Calls a method of the mixer, and returns what it gives.
  QVariantList call(const QString& method, const QVariantList& arguments = {}) const;

  /// All properties by name; lists are of QVariantMap.
  QVariantMap properties() const;

  const QString& service() const noexcept { return service_; }

  const QDBusConnection& bus() const noexcept { return bus_; }

 private:
  QVariantList ask(QLatin1String interface, const QString& method, const QVariantList& arguments) const;

  QString service_;
  QDBusConnection bus_;
};

/// As MixerClient::properties, from the reply to GetAll.
QVariantMap readProperties(const QVariant& reply);

} // namespace sonvel::command
