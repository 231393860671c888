#pragma once

#include <QDBusConnection>
#include <QHash>
#include <QString>

namespace sonvel::remote {

/// Decides who on the bus may use the mixer: every program of the user, except sandboxed ones (Flatpak, Snap)
/// and those that can't be examined. The answer is cached, since it cannot change during a connection. Main
/// thread.
class CallerGate {
 public:
  /// `caller` is its unique name on `bus`. Asks the bus and blocks for the answer, once per caller.
  [[nodiscard]] bool admits(const QString& caller, const QDBusConnection& bus);

 private:
  QHash<QString, bool> known_;
};

} // namespace sonvel::remote
