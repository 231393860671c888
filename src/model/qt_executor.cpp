#include "model/qt_executor.h"

#include <QThread>

namespace sonvel {

QtExecutor::~QtExecutor() {
  while (runNext())
    continue;
}

void QtExecutor::post(std::function<void()> work) {
  {
    const std::scoped_lock lock(mutex_);
    work_.push_back(std::move(work));
  }
  // One event for each piece, so that the loop's other events get their turn between two of them.
  QMetaObject::invokeMethod(
      this, [this] { runNext(); }, Qt::QueuedConnection);
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
