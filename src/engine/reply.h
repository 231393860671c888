#pragma once

#include "platform/executor.h"

#include <condition_variable>
#include <coroutine>
#include <exception>
#include <memory>
#include <mutex>
#include <type_traits>
#include <utility>
#include <variant>

namespace sonvel {

namespace detail {

/// Shared by an actor and the holder of a Reply. Any thread.
template <class R> class ReplyState {
 public:
  using Value = std::conditional_t<std::is_void_v<R>, std::monostate, R>;

  /// Sets the outcome to the result or exception of `function`. Call once.
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

  /// Calls `continuation` when the outcome is set, on the thread that sets it; immediately if it is set.
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

  R take() {
    std::unique_lock lock(mutex_);
    ready_.wait(lock, [this] { return isReady(); });
    if (outcome_.index() == kException) std::rethrow_exception(std::get<kException>(outcome_));
    if constexpr (!std::is_void_v<R>) return std::move(std::get<kValue>(outcome_));
  }

 private:
  static constexpr std::size_t kValue = 1;
  static constexpr std::size_t kException = 2;
  using Outcome = std::variant<std::monostate, Value, std::exception_ptr>;

  bool isReady() const noexcept { return outcome_.index() != 0; }

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

  std::mutex mutex_; ///< guards the three members below
  std::condition_variable ready_;
  Outcome outcome_;
  std::function<void()> continuation_;
};

} // namespace detail

/// The outcome of a call to an actor; wait for it or await it once. Dropping the reply does not cancel the
/// call. Used by one thread at a time; stays valid after the actor's end.
template <class R> class [[nodiscard]] Reply {
 public:
  struct Awaiter {
    // Always suspends, so that the code after co_await runs on the executor even if the outcome is set.
    bool await_ready() const noexcept { return false; }

    void await_suspend(std::coroutine_handle<> waiter) {
      const auto shared = state; // the coroutine may resume and destroy this object before whenReady returns
      shared->whenReady([waiter, &resumer = executor] { resumer.post(waiter); });
    }

    R await_resume() { return state->take(); }

    std::shared_ptr<detail::ReplyState<R>> state;
    Executor& executor;
  };

  explicit Reply(std::shared_ptr<detail::ReplyState<R>> state) noexcept
      : state_(std::move(state)) {}

  /// Blocks until the call has run, then returns its result or throws its exception. Call once; not on the
  /// actor's thread.
  R get() {
    const auto state = std::move(state_);
    return state->take();
  }

  /// For co_await, which returns or throws the call's outcome. The coroutine resumes as work of `executor`,
  /// which must exist until then.
  Awaiter resumeOn(Executor& executor) && noexcept { return {std::move(state_), executor}; }

 private:
  std::shared_ptr<detail::ReplyState<R>> state_;
};

} // namespace sonvel
