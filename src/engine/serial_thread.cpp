#include "engine/serial_thread.h"

#include <cassert>
#include <pthread.h>

namespace sonvel {

SerialThread::SerialThread()
    : thread_([this] { run(); })
    , id_(thread_.get_id()) {
  pthread_setname_np(thread_.native_handle(), "sonvel-control");
}

SerialThread::~SerialThread() {
  finish();
}

void SerialThread::post(std::function<void()> work) {
  {
    const std::scoped_lock lock(mutex_);
    work_.push_back(std::move(work)); // dropped if the thread has ended
  }
  changed_.notify_one();
}

bool SerialThread::isCurrent() const {
  return std::this_thread::get_id() == id_;
}

void SerialThread::observe(Observer observer) {
  post([this, observer = std::move(observer)] { observer_ = observer; });
}

void SerialThread::finish() {
  assert(!isCurrent());
  {
    const std::scoped_lock lock(mutex_);
    isFinishing_ = true;
  }
  changed_.notify_one();
  if (thread_.joinable()) thread_.join();
}

void SerialThread::run() {
  std::function<void()> work;
  while (takeNext(work)) {
    const auto began = std::chrono::steady_clock::now();
    work();
    work = nullptr; // destroys captured objects before the thread waits again
    if (observer_) observer_(std::chrono::steady_clock::now() - began);
  }
}

bool SerialThread::takeNext(std::function<void()>& work) {
  std::unique_lock lock(mutex_);
  changed_.wait(lock, [this] { return !work_.empty() || isFinishing_; });
  if (work_.empty()) return false;
  work = std::move(work_.front());
  work_.pop_front();
  return true;
}

} // namespace sonvel
