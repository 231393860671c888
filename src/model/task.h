#pragma once

#include "platform/executor.h"

#include <QCoroTask>
#include <concepts>
#include <exception>
#include <stop_token>
#include <utility>

namespace sonvel {

/// A task on the main thread that nobody awaits. Copies refer to the same task; it continues without them.
/// Any thread.
class Task {
 public:
  /// Requests the task's end. It ends where it next checks its token; a sleep ends at once.
  void cancel() { cancellation_.request_stop(); }

  bool isCancelled() const noexcept { return cancellation_.stop_requested(); }

  std::stop_token token() const noexcept { return cancellation_.get_token(); }

 private:
  std::stop_source cancellation_;
};

namespace detail {

/// A coroutine that nobody awaits. An exception that leaves it is a programming error and terminates the
/// program.
struct DetachedCoroutine {
  struct promise_type { // NOLINT(readability-identifier-naming): the language asks for it

    DetachedCoroutine get_return_object() const noexcept { return {}; }

    std::suspend_never initial_suspend() const noexcept { return {}; }

    std::suspend_never final_suspend() const noexcept { return {}; }

    void return_void() const noexcept {}

    [[noreturn]] void unhandled_exception() const noexcept { std::terminate(); }
  };
};

/// Keeps `body` alive until its coroutine has ended, because the coroutine may use the lambda's captures.
template <class Body> DetachedCoroutine runTask(Body body, std::stop_token cancellation) {
  if constexpr (std::invocable<const Body&, std::stop_token>)
    co_await body(std::move(cancellation));
  else
    co_await body();
}

} // namespace detail

/// Starts a task. `body` returns an awaitable (a coroutine or a reply) and may take the cancellation token.
/// It runs as work of `mainThread`, never inside this call. Any thread.
template <class Body> Task startTask(Executor& mainThread, Body body) {
  Task task;
  mainThread.post([body = std::move(body), cancellation = task.token()] {
    detail::runTask(std::move(body), cancellation);
  });
  return task;
}

} // namespace sonvel
