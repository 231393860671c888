#pragma once

#include <QDBusConnection>
#include <QHash>
#include <QString>

namespace sonvel::remote {

/// Tells who on the bus may work the mixer: every program of the user, but none in a sandbox (Flatpak, Snap)
/// and none that can't be examined. What a caller is doesn't change while it is connected. Main thread.
class CallerGate {
 public:
  /// `caller` is its unique name on `bus`. Asks the bus and waits for its answer, once for each caller.
  [[nodiscard]] bool admits(const QString& caller, const QDBusConnection& bus);

 private:
  QHash<QString, bool> known_;
};

} // namespace sonvel::remote
