#pragma once

#include "app/session_manager_client.h"

#include <QDBusConnection>
#include <QObject>
#include <QSocketNotifier>
#include <functional>

namespace sonvel {

/// Everything by which the process is asked to end, as one callback: SIGTERM, SIGINT and SIGHUP (unless that
/// was ignored from the start, as nohup does), the end of the desktop's session, and
/// QCoreApplication::quit() in all its forms (the last window closed, an X11 session manager's "die").
///
/// From its construction on none of these ends the process by itself, signals not even after its destruction.
/// The one way out is QCoreApplication::exit(). At most one at a time, on the main thread, with a
/// QCoreApplication that outlives it.
class QuitRequests final : public QObject {
 public:
  /// `quit` is called from the event loop, once for each request; it mustn't destroy this object.
  explicit QuitRequests(std::function<void()> quit, QDBusConnection bus = QDBusConnection::sessionBus());
  ~QuitRequests() override;
  QuitRequests(const QuitRequests&) = delete;
  QuitRequests& operator=(const QuitRequests&) = delete;

  /// Tells the session manager that waits for it that it needs to wait no longer. The end of the process
  /// tells the same.
  void tellDone() { sessionManager_.tellDone(); }

 private:
  bool eventFilter(QObject* watched, QEvent* event) override;

  std::function<void()> quit_;
  QSocketNotifier signals_;
  SessionManagerClient sessionManager_;
};

} // namespace sonvel
