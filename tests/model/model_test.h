#pragma once

#include "engine/hardware_controller.h"
#include "model/mixer_view_model.h"
#include "model/qt_executor.h"
#include "model/scripted_desktop.h"
#include "simulated/desktop.h"
#include "simulated/manual_clock.h"
#include "simulated/preferences.h"
#include "simulated/simulated_audio.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <semaphore>

namespace sonvel {

using namespace std::chrono_literals;

/// Only against hanging; passing tests never wait for it.
inline constexpr auto kDeadline = 60s;

inline constexpr auto kTick = 120ms;             ///< of the polling
inline constexpr auto kReconciliationTicks = 10; ///< from one to the next
inline constexpr auto kMonitorInterval = 5s;

/// Counts the unfinished work of another executor. Any thread.
class CountingExecutor final : public Executor {
 public:
  explicit CountingExecutor(Executor& executor)
      : executor_(executor) {}

  void post(std::function<void()> work) override;

  bool isCurrent() const override { return executor_.isCurrent(); }

  int pending() const noexcept { return pending_; }

 private:
  Executor& executor_;
  std::atomic<int> pending_ = 0;
};

/// Gives access to model state that no view shows.
class MixerInspector {
 public:
  using Settings = std::pair<int, bool>; ///< percent and mute

  static std::map<std::string, Settings> remembered(const MixerViewModel& model);
  static bool isPanelOpen(const MixerViewModel& model);
};

/// Which call to hold.
struct WhichCall {
  simulated::Call call = simulated::Call::createProcessTap;
  std::optional<AudioObjectID> object = {}; ///< only on this object
  int after = 0;                            ///< how many such calls pass first
};

/// Blocks one call on its thread, so that a test can act during it. One at a time.
class HeldCall {
 public:
  HeldCall(simulated::SimulatedAudio& audio, WhichCall which);
  ~HeldCall();
  HeldCall(const HeldCall&) = delete;
  HeldCall& operator=(const HeldCall&) = delete;

  bool isHeld() const noexcept { return isHeld_; }

  void release() { gate_.release(); }

 private:
  simulated::SimulatedAudio& audio_;
  std::atomic<bool> isHeld_ = false;
  std::atomic<int> before_; ///< calls that still pass; negative when done
  std::binary_semaphore gate_{0};
};

/// The model with a real actor on a simulated machine: two output devices, "speakers" (the default, with a
/// volume) and "headset", a manual clock, and capture permission.
class MixerTest : public testing::Test {
 protected:
  MixerTest();
  ~MixerTest() override;

  /// Starts an application that constantly plays the same sample.
  AudioObjectID play(const std::string& name, const std::string& bundleID, float sample = 0.25F);

  /// Runs the event loop until nothing remains to do without time passing. False on a timeout.
  [[nodiscard]] bool settle();

  /// Runs the event loop until `condition` holds; another thread may cause it.
  [[nodiscard]] bool pumpUntil(const std::function<bool()>& condition);

  /// Runs posted events without waiting for the actor.
  void pump();

  void openPanel();
  void pass(Clock::Duration duration);
  void passTicks(int count);

  /// Lets time pass for exactly one reconciliation.
  void passReconciliation() { passTicks(kReconciliationTicks); }

  /// Runs an I/O cycle; returns the device's left channel.
  float heard(const std::string& deviceUID = "speakers");

  ChannelState* row(const std::string& stableKey) const;
  std::vector<std::string> rowNames() const;
  std::vector<AudioObjectID> controlled();

  /// The number of such calls in the log; only of the property `selector` if it is not 0.
  long calls(simulated::Call call, std::uint32_t selector = 0) const;

  std::map<std::string, MixerInspector::Settings> remembered() const {
    return MixerInspector::remembered(*model_);
  }

  simulated::SimulatedAudio audio_;
  simulated::SimulatedProcesses processes_;
  simulated::SimulatedBundle bundle_{"com.quellmarsh.sonvel"};
  simulated::SimulatedApplications applications_;
  simulated::ManualClock clock_;
  ScriptedConsent consent_;
  AudioPermission permission_{consent_};
  simulated::SimulatedPreferences preferences_;
  CountedUpdates updates_;
  QtExecutor qtExecutor_;
  CountingExecutor mainThread_{qtExecutor_};
  std::shared_ptr<Actor<HardwareController>> actor_;
  std::shared_ptr<MixerViewModel> model_;

 private:
  std::int32_t nextPid_ = 500;
};

} // namespace sonvel
