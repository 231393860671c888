#pragma once

#include "engine/reply.h"
#include "engine/serial_thread.h"

#include <concepts>
#include <functional>

namespace sonvel {

/// An object that is used only on a thread of its own, by one call at a time, in the order of the calls.
///
/// Destroying the actor first runs all pending calls and the calls that these post, then destroys the object
/// on the destroying thread, which must not be the actor's own.
template <class T> class Actor final {
 public:
  /// Constructs the object on the calling thread from `args`, followed by its executor as a
  /// `std::weak_ptr<Executor>`.
  template <class... Args>
  explicit Actor(Args&&... args)
      : thread_(std::make_shared<SerialThread>())
      , object_(std::make_shared<T>(std::forward<Args>(args)..., std::weak_ptr<Executor>(thread_))) {}

  ~Actor() { thread_->finish(); }

  Actor(const Actor&) = delete;
  Actor& operator=(const Actor&) = delete;

  /// As SerialThread::observe(). Any thread; does not wait.
  void observe(SerialThread::Observer observer) { thread_->observe(std::move(observer)); }

  /// Runs `function`, a callable or a member function pointer, with the object on the actor's thread. Any
  /// thread; does not wait.
  template <std::invocable<T&> F> Reply<std::invoke_result_t<F, T&>> call(F&& function) {
    using R = std::invoke_result_t<F, T&>;
    static_assert(!std::is_reference_v<R>, "references to the actor's object must not leave its thread");
    auto state = std::make_shared<detail::ReplyState<R>>();
    auto callable = std::make_shared<std::decay_t<F>>(std::forward<F>(function));
    thread_->post([object = object_.get(), state, callable] {
      state->completeWith([&]() -> R { return std::invoke(std::move(*callable), *object); });
    });
    return Reply<R>(std::move(state));
  }

  /// Runs `function` with the object and an answer callback, which takes an R, on the actor's thread. The
  /// callback may be called on any thread, once; that completes the reply. Other calls may run until then. If
  /// `function` throws, the reply gets the exception; the answer must not have been called then.
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
