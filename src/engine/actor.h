#pragma once

#include "engine/reply.h"
#include "engine/serial_thread.h"

#include <concepts>
#include <functional>

namespace sonvel {

/// An object that is used on a thread of its own alone, by one call at a time in the order of the calls.
///
/// Destroying the actor first runs every call that is pending, with what those calls post in turn, and then
/// destroys the object on the destroying thread, which must not be the actor's own.
template <class T> class Actor final {
 public:
  /// Makes the object, on this thread, from `args` followed by its executor as a `std::weak_ptr<Executor>`.
  template <class... Args>
  explicit Actor(Args&&... args)
      : thread_(std::make_shared<SerialThread>())
      , object_(std::make_shared<T>(std::forward<Args>(args)..., std::weak_ptr<Executor>(thread_))) {}

  ~Actor() { thread_->finish(); }

  Actor(const Actor&) = delete;
  Actor& operator=(const Actor&) = delete;

  /// Runs `function`, a callable or a member function pointer, with the object on the actor's thread. Any
  /// thread; does not wait.
  template <std::invocable<T&> F> Reply<std::invoke_result_t<F, T&>> call(F&& function) {
    using R = std::invoke_result_t<F, T&>;
    static_assert(!std::is_reference_v<R>, "what the object owns must not leave its thread");
    auto state = std::make_shared<detail::ReplyState<R>>();
    auto callable = std::make_shared<std::decay_t<F>>(std::forward<F>(function));
    thread_->post([object = object_.get(), state, callable] {
      state->completeWith([&]() -> R { return std::invoke(std::move(*callable), *object); });
    });
    return Reply<R>(std::move(state));
  }

  /// Runs `function` with the object and an answer, a callable that takes an R, on the actor's thread. The
  /// reply comes when the answer is called, on any thread, once; other calls may run until then. It is an
  /// exception if `function` throws, which must not have called the answer then.
  template <class R, class F> Reply<R> callForAnswer(F&& function) {
    auto state = std::make_shared<detail::ReplyState<R>>();
    auto callable = std::make_shared<std::decay_t<F>>(std::forward<F>(function));
    thread_->post([object = object_.get(), state, callable] {
      try {
        std::invoke(*callable, *object,
                    [state](R value) { state->completeWith([&] { return std::move(value); }); });
      } catch (...) {
        state->completeWith([]() -> R { throw; });
      }
    });
    return Reply<R>(std::move(state));
  }

 private:
  const std::shared_ptr<SerialThread> thread_;
  const std::shared_ptr<T> object_;
};

} // namespace sonvel
