#pragma once

#include "engine/serial_thread.h"

#include <cassert>
#include <chrono>
#include <coroutine>
#include <exception>
#include <memory>
#include <type_traits>
#include <utility>
#include <variant>

namespace sonvel {

namespace detail {

/// What an actor and the holder of a Reply share.
template <class R> class ReplyState {
 public:
  using Value = std::conditional_t<std::is_void_v<R>, std::monostate, R>;

  explicit ReplyState(std::weak_ptr<SerialThread> actorThread)
      : actorThread_(std::move(actorThread)) {}

  /// Sets the outcome to that of `function`.
  template <class F> void completeWith(F&& function) {
    Outcome outcome;
    try {
      if constexpr (std::is_void_v<R>) {
        std::forward<F>(function)();
        outcome.template emplace<kValue>();
      } else {
        outcome.template emplace<kValue>(std::forward<F>(function)());
      }
    } catch (...) {
      outcome.template emplace<kException>(std::current_exception());
    }
    complete(std::move(outcome));
  }

  /// Calls `continuation` when there is an outcome, on the thread that sets it, or now if there is one.
  void whenReady(std::function<void()> continuation) {
    {
      const std::scoped_lock lock(mutex_);
      if (!isReady()) {
        continuation_ = std::move(continuation);
        return;
      }
    }
    continuation();
  }

  bool waitFor(std::chrono::nanoseconds duration) {
    std::unique_lock lock(mutex_);
    return ready_.wait_for(lock, duration, [this] { return isReady(); });
  }

  R take() {
    std::unique_lock lock(mutex_);
    assert(isReady() || !isActorThread());
    ready_.wait(lock, [this] { return isReady(); });
    if (outcome_.index() == kException) std::rethrow_exception(std::get<kException>(outcome_));
    if constexpr (!std::is_void_v<R>) return std::move(std::get<kValue>(outcome_));
  }

  const std::weak_ptr<SerialThread>& actorThread() const noexcept { return actorThread_; }

 private:
  static constexpr std::size_t kValue = 1;
  static constexpr std::size_t kException = 2;
  using Outcome = std::variant<std::monostate, Value, std::exception_ptr>;

  bool isReady() const noexcept { return outcome_.index() != 0; }

  bool isActorThread() const {
    const auto thread = actorThread_.lock();
    return thread && thread->isCurrent();
  }

  void complete(Outcome outcome) {
    std::function<void()> continuation;
    {
      const std::scoped_lock lock(mutex_);
      outcome_ = std::move(outcome);
      continuation.swap(continuation_);
    }
    ready_.notify_all();
    if (continuation) continuation();
  }

  std::mutex mutex_; ///< guards the next three
  std::condition_variable ready_;
  Outcome outcome_;
  std::function<void()> continuation_;

  const std::weak_ptr<SerialThread> actorThread_;
};

} // namespace detail

/// The outcome of a call to an actor, to be waited for or awaited once. Dropping it loses the outcome, not
/// the call. A reply is used by one thread at a time, and stays good when the actor is gone.
template <class R> class [[nodiscard]] Reply {
 public:
  explicit Reply(std::shared_ptr<detail::ReplyState<R>> state) noexcept
      : state_(std::move(state)) {}

  Reply(Reply&&) noexcept = default;
  Reply& operator=(Reply&&) noexcept = default;
  ~Reply() = default;

  /// Blocks until the call has run, and returns or throws what it did. Once; not from the actor's thread.
  R get() {
    const auto state = std::move(state_);
    return state->take();
  }

  /// Blocks until the call has run, or `duration` of real time has passed; whether it has run.
  bool waitFor(std::chrono::nanoseconds duration) const { return state_->waitFor(duration); }

  /// Chooses where a coroutine that awaits this reply goes on: as work of `executor`, which must exist until
  /// then. Otherwise it goes on on the actor's thread, after what was posted there before; if the actor is
  /// gone, at once where it is.
  Reply resumeOn(Executor& executor) && noexcept {
    resumeOn_ = &executor;
    return std::move(*this);
  }

  // For co_await, which gives or throws what the call did. It always suspends, so that the code behind it is
  // where resumeOn says, however early the outcome is there.

  bool await_ready() const noexcept { return false; }

  void await_suspend(std::coroutine_handle<> waiter) {
    const auto state = state_; // the coroutine may go on and destroy this reply before whenReady returns
    state->whenReady([waiter, executor = resumeOn_, actorThread = state->actorThread()] {
      if (executor != nullptr) return executor->post(waiter);
      const auto thread = actorThread.lock();
      if (!thread || !thread->tryPost(waiter)) waiter.resume();
    });
  }

  R await_resume() { return get(); }

 private:
  std::shared_ptr<detail::ReplyState<R>> state_;
  Executor* resumeOn_ = nullptr;
};

} // namespace sonvel
