#pragma once

#include "platform/executor.h"

#include <deque>
#include <utility>

namespace sonvel {

/// Runs its work on request. One thread; every caller counts as its work.
class ManualExecutor final : public Executor {
 public:
  void post(std::function<void()> work) override { work_.push_back(std::move(work)); }

  bool isCurrent() const override { return true; }

  std::size_t pendingCount() const { return work_.size(); }

  void runNext() {
    const auto work = std::move(work_.at(0));
    work_.pop_front();
    work();
  }

  /// Also runs work posted meanwhile.
  void runAll() {
    while (!work_.empty())
      runNext();
  }

 private:
  std::deque<std::function<void()>> work_;
};

} // namespace sonvel
