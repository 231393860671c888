#pragma once

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QTimer>
#include <chrono>
#include <functional>

namespace sonvel::session {

/// Lets Qt's event loop run until `condition` holds. False if that took longer than `deadline`.
[[nodiscard]] inline bool waitUntil(const std::function<bool()>& condition,
                                    std::chrono::milliseconds deadline = std::chrono::seconds(20)) {
  QElapsedTimer elapsed;
  elapsed.start();
  QTimer waker; // an event loop without events would sleep over the deadline
  waker.start(std::chrono::milliseconds(50));
  while (!condition()) {
    if (elapsed.hasExpired(deadline.count())) return false;
    QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
  }
  return true;
}

} // namespace sonvel::session
