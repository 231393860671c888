#pragma once

#include "command/mixer_client.h"

#include <QByteArray>
#include <QDBusServiceWatcher>
#include <QEventLoop>
#include <QObject>
#include <QTimer>
#include <optional>

namespace sonvel::command {

using Format = QByteArray (*)(const QVariantMap& properties);

/// Prints the mixer's properties in `format` at the start and after each change.
class Watch final : public QObject {
  Q_OBJECT

 public:
  /// `mixer` outlives this object.
  Watch(const MixerClient& mixer, Format format, bool hasLevels);

  /// Never returns. Throws Failure when the watched program has ended or does not answer.
  [[noreturn]] void run();

 private:
  Q_SLOT void note();
  void read();
  void print(const QVariantMap& properties);

  const MixerClient& mixer_;
  const Format format_;
  const bool hasLevels_;
  QDBusServiceWatcher ending_;
  QEventLoop loop_;
  QTimer reading_;
  QByteArray printed_;
  std::optional<Failure> failure_;
};

} // namespace sonvel::command
