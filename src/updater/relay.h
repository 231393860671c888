#pragma once

#include <QObject>
#include <functional>
#include <memory>

namespace sonvel::updater {

/// Brings calls from other threads back to the thread that made the relay, in their order. Once the relay is
/// gone they do nothing.
class Relay {
 public:
  Relay();
  ~Relay();
  Relay(const Relay&) = delete;
  Relay& operator=(const Relay&) = delete;

  /// A function for any thread that lets `work` run on the relay's thread, never from inside the call.
  std::function<void()> bind(std::function<void()> work) const;

  /// Lets `work` run on a thread of its own and then `after` with its result on the relay's.
  template <typename Result>
  void runAside(std::function<Result()> work, std::function<void(Result)> after) const {
    const auto result = std::make_shared<std::unique_ptr<Result>>();
    const auto back = bind([result, after = std::move(after)] { after(std::move(**result)); });
    start([result, work = std::move(work), back] {
      *result = std::make_unique<Result>(work());
      back();
    });
  }

 private:
  struct Target;

  static void start(std::function<void()> work);

  std::shared_ptr<Target> target_;
};

} // namespace sonvel::updater
