#include "model/qt_executor.h"

#include <QCoreApplication>
#include <QEvent>
#include <QThread>
#include <memory>

namespace sonvel {

QtExecutor::~QtExecutor() {
  while (runNext())
    continue;
}

void QtExecutor::post(std::function<void()> work) {
  // One event per piece of work, so that other events run in between. The event is created before the lock is
  // taken: the thread sanitizer cannot follow Qt's queue, and the lock shows it that creation comes before
  // deletion.
  auto wake = std::make_unique<QEvent>(QEvent::User);
  {
    const std::scoped_lock lock(mutex_);
    work_.push_back(std::move(work));
  }
  QCoreApplication::postEvent(this, wake.release());
}

void QtExecutor::customEvent(QEvent*) {
  runNext();
}

bool QtExecutor::isCurrent() const {
  return thread() == QThread::currentThread();
}

bool QtExecutor::runNext() {
  std::function<void()> work;
  {
    const std::scoped_lock lock(mutex_);
    if (work_.empty()) return false;
    work = std::move(work_.front());
    work_.pop_front();
  }
  work();
  return true;
}

} // namespace sonvel
