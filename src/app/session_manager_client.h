#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QObject>
#include <QString>
#include <functional>

namespace sonvel {

/// A client of the desktop's session manager (org.gnome.SessionManager, also offered by other desktops), so
/// that logout waits until this process has finished. Does nothing without such a manager. Main thread.
class SessionManagerClient final : public QObject {
  Q_OBJECT

 public:
  /// Registers without waiting. `endSession` is called from the event loop at logout.
  SessionManagerClient(std::function<void()> endSession, QDBusConnection bus);
  ~SessionManagerClient() override;
  SessionManagerClient(const SessionManagerClient&) = delete;
  SessionManagerClient& operator=(const SessionManagerClient&) = delete;

  /// Answers a session manager that waits since `endSession`; otherwise no effect.
  void tellDone();

 private:
  Q_SLOT void onQueryEndSession(uint flags);
  Q_SLOT void onEndSession(uint flags);
  Q_SLOT void onStop();

  void listenAt(const QString& path);
  [[nodiscard]] QDBusMessage agreement() const;

  std::function<void()> endSession_;
  QDBusConnection bus_;
  QString path_; // our client object at the session manager; empty: not registered
  bool isAwaited_ = false;
};

} // namespace sonvel
