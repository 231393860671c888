#pragma once

#include "app/session_manager_client.h"

#include <QDBusConnection>
#include <QObject>
#include <QSocketNotifier>
#include <functional>

namespace sonvel {

/// Collects every request to quit into one callback: SIGTERM, SIGINT and SIGHUP (unless ignored from the
/// start, as under nohup), the end of the desktop session, and QCoreApplication::quit() in all its forms
/// (last window closed, an X11 session manager's "die").
///
/// Once constructed, none of these ends the process by itself; for signals this holds after destruction too.
/// Only QCoreApplication::exit() ends it. At most one at a time, on the main thread, with a QCoreApplication
/// that outlives it.
class QuitRequests final : public QObject {
 public:
  /// `quit` is called from the event loop for each request; it must not destroy this object.
  explicit QuitRequests(std::function<void()> quit, QDBusConnection bus = QDBusConnection::sessionBus());
  ~QuitRequests() override;
  QuitRequests(const QuitRequests&) = delete;
  QuitRequests& operator=(const QuitRequests&) = delete;

  /// Lets a waiting session manager continue. The end of the process has the same effect.
  void tellDone() { sessionManager_.tellDone(); }

 private:
  bool eventFilter(QObject* watched, QEvent* event) override;

  std::function<void()> quit_;
  QSocketNotifier signals_;
  SessionManagerClient sessionManager_;
};

} // namespace sonvel
