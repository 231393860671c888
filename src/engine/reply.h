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

/// What an actor and the holder of a Reply share. Any thread.
template <class R> class ReplyState {
 public:
  using Value = std::conditional_t<std::is_void_v<R>, std::monostate, R>;

  /// Sets the outcome to that of `function`. Once.
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

  std::mutex mutex_; ///< guards the next three
  std::condition_variable ready_;
  Outcome outcome_;
  std::function<void()> continuation_;
};

} // namespace detail

/// The outcome of a call to an actor, to be waited for or awaited once. Dropping it loses the outcome, not
/// the call. A reply is used by one thread at a time, and stays good when the actor is gone.
template <class R> class [[nodiscard]] Reply {
 public:
  /// What is awaited.
  struct Awaiter {
    // It always suspends, so that the code behind it runs on the executor, however early the outcome is
    // there.
    bool await_ready() const noexcept { return false; }

    void await_suspend(std::coroutine_handle<> waiter) {
      const auto shared = state; // the coroutine may go on and destroy this before whenReady returns
      shared->whenReady([waiter, &resumer = executor] { resumer.post(waiter); });
    }

    R await_resume() { return state->take(); }

    std::shared_ptr<detail::ReplyState<R>> state;
    Executor& executor;
  };

  explicit Reply(std::shared_ptr<detail::ReplyState<R>> state) noexcept
      : state_(std::move(state)) {}

  /// Blocks until the call has run, and returns or throws what it did. Once; not from the actor's thread.
  R get() {
    const auto state = std::move(state_);
    return state->take();
  }

  /// For co_await, which gives or throws what the call did: the coroutine goes on as work of `executor`,
  /// which must exist until then.
  Awaiter resumeOn(Executor& executor) && noexcept { return {std::move(state_), executor}; }

 private:
  std::shared_ptr<detail::ReplyState<R>> state_;
};

} // namespace sonvel
