#pragma once

#include "engine/hardware_controller.h"
#include "engine/manual_executor.h"
#include "simulated/desktop.h"
#include "simulated/manual_clock.h"
#include "simulated/simulated_audio.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

namespace sonvel {

/// A controller on a simulated machine with two output devices, "speakers" (the default) and "headset".
class ControllerTest : public testing::Test {
 protected:
  ControllerTest() {
    audio_.addDevice({.uid = "speakers", .name = "Speakers", .volumes = {{kElementMain, {0.5F}}}});
    audio_.addDevice({.uid = "headset", .name = "Headset"});
  }

  /// An application that constantly plays the same sample to the default device.
  AudioApp playingApp(AudioObjectID objectID, float sample = 0.25F, std::int32_t pid = 512) {
    const auto bundleID = "com.example.Player" + std::to_string(objectID);
    audio_.addProcess({.pid = pid,
                       .bundleID = bundleID,
                       .streams = {simulated::constantSignal(sample, sample)},
                       .objectID = objectID});
    return {
        .objectID = objectID, .pid = pid, .bundleID = bundleID, .name = "Player", .parentBundleID = bundleID};
  }

  void addChannel(const AudioApp& app, std::optional<std::string> outputUID = std::nullopt) {
    controller_->addChannel(app, 1.0F, false, std::move(outputUID));
  }

  /// The error description of addChannel; empty if it succeeds.
  std::string errorOfAddChannel(const AudioApp& app, std::optional<std::string> outputUID = std::nullopt) {
    try {
      addChannel(app, std::move(outputUID));
    } catch (const HardwareError& error) {
      return error.description();
    }
    return {};
  }

  /// The constant sample that a device makes audible in one cycle.
  float heard(const std::string& deviceUID) {
    audio_.runCycle();
    const auto frames = audio_.heard(deviceUID);
    const bool isConstant = std::ranges::all_of(frames, [&](const auto& frame) {
      return frame.left == frames.front().left && frame.right == frames.front().left;
    });
    if (frames.empty() || !isConstant) ADD_FAILURE() << "no constant sound on " << deviceUID;
    return frames.empty() ? 0.0F : frames.front().left;
  }

  /// Makes every call of a kind fail, on one object or any, until clearFailures().
  void failAlways(simulated::Call call, std::optional<AudioObjectID> object = std::nullopt) {
    audio_.fail({.call = call, .status = -50, .object = object, .times = std::nullopt});
  }

  /// The creating and removing calls since clearLog().
  std::vector<simulated::Call> changes() const {
    std::vector<simulated::Call> calls;
    for (const auto& logged : audio_.log()) {
      if (logged.call >= simulated::Call::createProcessTap) calls.push_back(logged.call);
    }
    return calls;
  }

  /// Advances time and runs the resulting work.
  void advance(Clock::Duration duration) {
    clock_.advance(duration);
    executor_->runAll();
  }

  simulated::SimulatedAudio audio_;
  simulated::SimulatedProcesses processes_;
  simulated::SimulatedBundle bundle_{"com.quellmarsh.sonvel"};
  simulated::SimulatedApplications applications_;
  simulated::ManualClock clock_;
  std::shared_ptr<ManualExecutor> executor_ = std::make_shared<ManualExecutor>();
  std::shared_ptr<HardwareController> controller_ = std::make_shared<HardwareController>(
      AudioEnvironment{audio_, processes_, bundle_, applications_}, clock_, executor_);
};

} // namespace sonvel
