#include "pipewire/loop_thread.h"

#include <stdexcept>

namespace sonvel::pipewire {

namespace {

constexpr std::chrono::milliseconds kTick{50};

} // namespace

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
  if (!loop_) throw std::runtime_error("the loop for audio events could not be made");
  tick_ = std::make_unique<LoopTimer>(loop(), [this] {
    signal();
    if (waiting_ > 0) tick_->armOnce(kTick);
  });
}

LoopThread::~LoopThread() {
  stop();
  tick_.reset();
  // pw_deinit is not called: other code in this process may use the library.
}

void LoopThread::start() {
  const SignalsBlocked blocked;
  if (pw_thread_loop_start(loop_.get()) != 0)
    throw std::runtime_error("the thread for audio events could not be started");
}

void LoopThread::stop() noexcept {
  pw_thread_loop_stop(loop_.get());
}

bool LoopThread::Lock::waitUntil(Deadline deadline, const std::function<bool()>& isTrue) const {
  // The library's own timed wait uses the wall clock, which may be set back.
  ++loop_.waiting_;
  loop_.tick_->armOnce(kTick);
  bool isSo = isTrue();
  while (!isSo && SteadyClock::now() < deadline) {
    pw_thread_loop_wait(loop_.loop_.get());
    isSo = isTrue();
  }
  --loop_.waiting_;
  return isSo;
}

LoopEvent::LoopEvent(pw_loop* loop, std::function<void()> callback)
    : LoopSource(loop, std::move(callback)) {
  source_ = pw_loop_add_event(
      loop_, [](void* self, std::uint64_t) { static_cast<LoopEvent*>(self)->callback_(); }, this);
}

LoopTimer::LoopTimer(pw_loop* loop, std::function<void()> callback)
    : LoopSource(loop, std::move(callback)) {
  source_ = pw_loop_add_timer(
      loop_, [](void* self, std::uint64_t) { static_cast<LoopTimer*>(self)->fire(); }, this);
}

void LoopTimer::fire() {
  isArmed_ = false;
  callback_();
}

void LoopTimer::armOnce(std::chrono::milliseconds delay) noexcept {
  if (!isArmed_) arm(delay);
}

void LoopTimer::arm(std::chrono::milliseconds delay) noexcept {
  const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(delay);
  timespec value{};
  value.tv_sec = seconds.count();
  value.tv_nsec = std::chrono::nanoseconds(delay - seconds).count();
  if (value.tv_sec == 0 && value.tv_nsec == 0) value.tv_nsec = 1; // zero would disarm it
  isArmed_ = true;
  pw_loop_update_timer(loop_, source_, &value, nullptr, false);
}

} // namespace sonvel::pipewire
