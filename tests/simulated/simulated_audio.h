#pragma once

#include "simulated/simulated_hardware.h"

#include <algorithm>

namespace sonvel::simulated {

/// A constant signal.
inline Signal constantSignal(float left, float right) {
  return [=](std::uint64_t) { return Frame{left, right}; };
}

/// Makes calls fail. A failing call does nothing: what it should have destroyed stays, what it should have
/// stopped runs. hasProperty fails by answering no.
struct Failure {
  std::optional<Call> call = {}; ///< none: any call

  /// The returned status. With kNoError the call claims success but does nothing: a creating call gives no
  /// object, a string is a null reference.
  OSStatus status = status::kUnspecified;

  /// Only calls on this object; for createProcessTap those that list it among the processes.
  std::optional<AudioObjectID> object = {};

  std::optional<std::uint32_t> selector = {}; ///< only property calls with this selector

  unsigned after = 0; ///< matching calls that pass before the first failure

  std::optional<unsigned> times = 1; ///< number of failures; none: all until cleared
};

/// The simulated hardware with scripted failures, a call log and a hook. Any thread.
class SimulatedAudio final : public SimulatedHardware {
 public:
  /// Adds a failure. If several match a call, the oldest is used.
  void fail(const Failure& failure) {
    const std::lock_guard lock(planMutex_);
    failures_.push_back(failure);
  }

  void clearFailures() {
    const std::lock_guard lock(planMutex_);
    failures_.clear();
  }

  /// Called on the caller's thread before each call, so that a test can delay it or change something first.
  /// May call the simulation, which then calls the hook again. Null: none.
  void setCallHook(std::function<void(Call, AudioObjectID object)> hook) {
    const std::lock_guard lock(planMutex_);
    hook_ = std::move(hook);
  }

  /// The calls since the start or clearLog(), in the order of their answers.
  std::vector<HardwareCall> log() const {
    const std::lock_guard lock(planMutex_);
    return log_;
  }

  void clearLog() {
    const std::lock_guard lock(planMutex_);
    log_.clear();
  }

 private:
  OSStatus carryOut(HardwareCall call, const Work& work) override {
    std::unique_lock lock(planMutex_);
    const auto hook = hook_;
    lock.unlock();
    if (hook) hook(call.call, call.object);
    return SimulatedHardware::carryOut(std::move(call), [&](HardwareCall& carriedOut) {
      const auto failure = takeFailure(carriedOut);
      // A configuration ends even if its commit fails.
      if (!failure || carriedOut.call == Call::commitConfiguration) carriedOut.status = work(carriedOut);
      if (failure) carriedOut.status = *failure;
      const std::lock_guard planLock(planMutex_);
      log_.push_back(carriedOut);
      return carriedOut.status;
    });
  }

  static bool matches(const Failure& failure, const HardwareCall& call) {
    if (failure.call && *failure.call != call.call) return false;
    if (failure.selector && *failure.selector != call.address.selector) return false;
    if (!failure.object || !call.tap) return !failure.object || *failure.object == call.object;
    return std::ranges::find(call.tap->processes, *failure.object) != call.tap->processes.end();
  }

  /// The status if the call must fail; counts the call.
  std::optional<OSStatus> takeFailure(const HardwareCall& call) {
    const std::lock_guard lock(planMutex_);
    std::optional<OSStatus> status;
    for (Failure& failure : failures_) {
      if (!matches(failure, call)) continue;
      if (failure.after > 0) {
        --failure.after;
      } else if (!status && failure.times != 0U) {
        status = failure.status;
        if (failure.times) --*failure.times;
      }
    }
    std::erase_if(failures_, [](const Failure& failure) { return failure.times == 0U; });
    return status;
  }

  mutable std::mutex planMutex_; ///< guards the members below
  std::vector<Failure> failures_;
  std::vector<HardwareCall> log_;
  std::function<void(Call, AudioObjectID)> hook_;
};

} // namespace sonvel::simulated
