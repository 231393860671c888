#pragma once

#include <QDBusConnection>
#include <QDBusServiceWatcher>
#include <QObject>
#include <optional>

class QDBusPendingCallWatcher;

namespace sonvel::ui {

/// Whether somebody shows StatusNotifierItem icons: a watcher on the session's bus, with a host. Both come
/// and go, at login often later than we do. Main thread; never blocks.
class TrayHostWatch final : public QObject {
  Q_OBJECT

 public:
  explicit TrayHostWatch(const QDBusConnection& bus);

  /// Nothing until the first answer, which comes from the event loop; without a bus false at once.
  [[nodiscard]] std::optional<bool> isHosted() const noexcept { return isHosted_; }

 Q_SIGNALS:
  /// The first answer, and each that differs from the last.
  void changed(bool isHosted);

 private:
  Q_SLOT void ask();

  void set(bool isHosted);

  QDBusConnection bus_;
  QDBusServiceWatcher owner_;
  QDBusPendingCallWatcher* question_ = nullptr; // the latest one, as long as it is open
  std::optional<bool> isHosted_;
};

} // namespace sonvel::ui
