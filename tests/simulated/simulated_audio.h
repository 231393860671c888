#pragma once

#include "simulated/simulated_hardware.h"

#include <algorithm>

namespace sonvel::simulated {

/// The same sample for ever.
inline Signal constantSignal(float left, float right) {
  return [=](std::uint64_t) { return Frame{left, right}; };
}

/// An order to let calls fail. A call that fails does nothing: what it should have destroyed stays, what it
/// should have stopped runs. hasProperty fails by answering no.
struct Failure {
  std::optional<Call> call = {}; ///< none: any call

  /// What the call returns. With kNoError it claims success and still does nothing: a creating call gives no
  /// object, a string is a null reference.
  OSStatus status = status::kUnspecified;

  /// Only calls on this object; for createProcessTap those that name it among the processes.
  std::optional<AudioObjectID> object = {};

  std::optional<std::uint32_t> selector = {}; ///< only property calls with this selector

  unsigned after = 0; ///< how many matching calls pass before the first that fails

  std::optional<unsigned> times = 1; ///< how many then fail; none: all, until cleared
};

/// The simulated hardware with calls that fail where they are told to, a log of them and a hook before them.
/// Any thread.
class SimulatedAudio final : public SimulatedHardware {
 public:
  /// Lets calls fail. Of several orders that match a call the oldest takes it.
  void fail(const Failure& failure) {
    const std::lock_guard lock(planMutex_);
    failures_.push_back(failure);
  }

  void clearFailures() {
    const std::lock_guard lock(planMutex_);
    failures_.clear();
  }

  /// Called on the caller's thread before each call is carried out, so that a test can hold up a call or
  /// change the world just before it. May call the simulation, but must then expect itself. Null: none.
  void setCallHook(std::function<void(Call, AudioObjectID object)> hook) {
    const std::lock_guard lock(planMutex_);
    hook_ = std::move(hook);
  }

  /// The calls since the start or clearLog, in the order they were answered.
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
      // A configuration ends in either case.
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

  /// The status with which a call is to fail, if it is; counts the call.
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

  mutable std::mutex planMutex_; ///< guards the following
  std::vector<Failure> failures_;
  std::vector<HardwareCall> log_;
  std::function<void(Call, AudioObjectID)> hook_;
};

} // namespace sonvel::simulated
