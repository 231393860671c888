#pragma once

#include <QDBusConnection>
#include <QDBusServiceWatcher>
#include <QObject>
#include <optional>

class QDBusPendingCallWatcher;

namespace sonvel::ui {

/// Whether StatusNotifierItem icons are shown: a watcher on the session bus, with a host. Both come and go,
/// at login often after this program. Main thread; never blocks.
class TrayHostWatch final : public QObject {
  Q_OBJECT

 public:
  explicit TrayHostWatch(const QDBusConnection& bus);

  /// None until the first answer, which comes from the event loop; false at once without a bus.
  [[nodiscard]] std::optional<bool> isHosted() const noexcept { return isHosted_; }

 Q_SIGNALS:
  /// Emitted for the first answer and each different one.
  void changed(bool isHosted);

 private:
  Q_SLOT void ask();

  void set(bool isHosted);

  QDBusConnection bus_;
  QDBusServiceWatcher owner_;
  QDBusPendingCallWatcher* question_ = nullptr; // the latest pending query
  std::optional<bool> isHosted_;
};

} // namespace sonvel::ui
