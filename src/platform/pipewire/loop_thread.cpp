#include "platform/pipewire/loop_thread.h"

#include <stdexcept>

namespace sonvel::pipewire {

SignalsBlocked::SignalsBlocked() noexcept {
  sigset_t all;
  sigfillset(&all);
  pthread_sigmask(SIG_BLOCK, &all, &before_);
}

SignalsBlocked::~SignalsBlocked() {
  pthread_sigmask(SIG_SETMASK, &before_, nullptr);
}

LoopThread::LoopThread() {
  pw_init(nullptr, nullptr);
  loop_.reset(pw_thread_loop_new("sonvel-audio", nullptr));
  const SignalsBlocked blocked;
  if (!loop_ || pw_thread_loop_start(loop_.get()) != 0)
    throw std::runtime_error("the thread for audio events could not be started");
}

LoopThread::~LoopThread() {
  pw_thread_loop_stop(loop_.get());
  // The library stays initialised: its end would take it from others in this process, too.
}

bool LoopThread::Lock::waitUntil(Deadline deadline, const std::function<bool()>& isTrue) const {
  while (!isTrue()) {
    const auto left = deadline - SteadyClock::now();
    if (left <= SteadyClock::duration::zero()) return false;
    timespec until{};
    pw_thread_loop_get_time(loop_.loop_.get(), &until,
                            std::chrono::duration_cast<std::chrono::nanoseconds>(left).count());
    pw_thread_loop_timed_wait_full(loop_.loop_.get(), &until);
  }
  return true;
}

LoopEvent::LoopEvent(pw_loop* loop, std::function<void()> callback)
    : LoopSource(loop, std::move(callback)) {
  source_ = pw_loop_add_event(
      loop_, [](void* self, std::uint64_t) { static_cast<LoopEvent*>(self)->callback_(); }, this);
}

LoopTimer::LoopTimer(pw_loop* loop, std::function<void()> callback)
    : LoopSource(loop, std::move(callback)) {
  source_ = pw_loop_add_timer(
      loop_, [](void* self, std::uint64_t) { static_cast<LoopTimer*>(self)->callback_(); }, this);
}

void LoopTimer::arm(std::chrono::milliseconds delay) noexcept {
  const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(delay);
  timespec value{};
  value.tv_sec = seconds.count();
  value.tv_nsec = std::chrono::nanoseconds(delay - seconds).count();
  if (value.tv_sec == 0 && value.tv_nsec == 0) value.tv_nsec = 1; // zero would disarm
  pw_loop_update_timer(loop_, source_, &value, nullptr, false);
}

} // namespace sonvel::pipewire
