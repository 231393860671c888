#pragma once

#include "platform/executor.h"

#include <QCoroTask>
#include <concepts>
#include <exception>
#include <stop_token>
#include <utility>

namespace sonvel {

/// A task that was started on the main thread and that nobody waits for. Copies stand for the same task;
/// dropping them all lets it run on. Any thread.
class Task {
 public:
  /// Asks the task to end. It notices where it looks at its token or sleeps on it.
  void cancel() { cancellation_.request_stop(); }

  bool isCancelled() const noexcept { return cancellation_.stop_requested(); }

  std::stop_token token() const noexcept { return cancellation_.get_token(); }

 private:
  std::stop_source cancellation_;
};

namespace detail {

/// A coroutine that runs on its own. An error that leaves it is a fault of the program and ends it.
struct DetachedCoroutine {
  struct promise_type { // NOLINT(readability-identifier-naming): the language asks for it

    DetachedCoroutine get_return_object() const noexcept { return {}; }

    std::suspend_never initial_suspend() const noexcept { return {}; }

    std::suspend_never final_suspend() const noexcept { return {}; }

    void return_void() const noexcept {}

    [[noreturn]] void unhandled_exception() const noexcept { std::terminate(); }
  };
};

/// `body` lives until what it has begun is over, so that a coroutine may use what its lambda has captured.
template <class Body> DetachedCoroutine runTask(Body body, std::stop_token cancellation) {
  if constexpr (std::invocable<const Body&, std::stop_token>)
    co_await body(std::move(cancellation));
  else
    co_await body();
}

} // namespace detail

/// Starts a task: `body`, called with the token of its cancellation if it takes one, gives what to await, a
/// coroutine or a reply. It begins as work of `mainThread`, never from inside this call. Any thread.
template <class Body> Task startTask(Executor& mainThread, Body body) {
  Task task;
  mainThread.post([body = std::move(body), cancellation = task.token()] {
    detail::runTask(std::move(body), cancellation);
  });
  return task;
}

} // namespace sonvel
