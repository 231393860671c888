#pragma once

#include "platform/executor.h"

#include <memory>
#include <mutex>
#include <tuple>
#include <utility>

namespace sonvel {

/// Brings calls from other threads to the thread of the object that owns the relay. After the relay's end
/// these calls do nothing, even if its executor is gone too. Declare it as the owner's last member, so that
/// no work finds the owner half destroyed.
class Relay {
 public:
  /// Posts work to the relay's thread.
  using Post = std::function<void(std::function<void()>)>;

  /// Work runs on `executor`, which outlives the relay.
  explicit Relay(Executor& executor)
      : Relay([&executor](std::function<void()> work) { executor.post(std::move(work)); }) {}

  /// `post` queues work for one thread, in order. It may be called from any thread until the relay ends.
  explicit Relay(Post post)
      : target_(std::make_shared<Target>()) {
    target_->post = std::move(post);
  }

  /// Call on the thread that runs the work, or after that thread has ended.
  ~Relay() {
    const std::scoped_lock lock(target_->mutex);
    target_->post = nullptr;
  }

  Relay(const Relay&) = delete;
  Relay& operator=(const Relay&) = delete;

  /// Returns a function that any thread may call; it posts `work` with the arguments and never runs it inside
  /// the call. It does not block, and may outlive the relay.
  template <class... Args, class Work> std::function<void(Args...)> bind(Work work) const {
    return [target = target_, work = std::make_shared<Work>(std::move(work))](Args... args) {
      const std::scoped_lock lock(target->mutex);
      if (!target->post) return;
      target->post([target, work, args = std::make_tuple(std::move(args)...)]() mutable {
        if (target->isAlive()) std::apply(*work, std::move(args));
      });
    };
  }

 private:
  struct Target {
    bool isAlive() {
      const std::scoped_lock lock(mutex);
      return post != nullptr;
    }

    std::mutex mutex; ///< guards `post`
    Post post;        ///< null after the relay's end
  };

  const std::shared_ptr<Target> target_;
};

} // namespace sonvel
