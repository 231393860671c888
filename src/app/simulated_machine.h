#pragma once

#include "app/program_audio.h"
#include "desktop/steady_clock.h"
#include "simulated/application_icons.h"
#include "simulated/desktop.h"
#include "simulated/preferences.h"
#include "simulated/simulated_hardware.h"
#include "simulated/simulated_server.h"

#include <condition_variable>
#include <thread>

namespace sonvel {

/// A simulated machine for work on the views without a sound server: three output devices, and applications
/// that play, pause and resume. Makes no sound and stores nothing.
class SimulatedMachine final : public ProgramAudio {
 public:
  /// Starts the applications on a thread of its own.
  SimulatedMachine();
  SimulatedMachine(const SimulatedMachine&) = delete;
  SimulatedMachine& operator=(const SimulatedMachine&) = delete;

  AudioEnvironment environment() override { return {audio_, processes_, bundle_, applications_}; }

  AudioServer& server() override { return server_; }

  const BundleInformation& bundle() const override { return bundle_; }

  const RunningApplications& applications() const override { return applications_; }

  const ApplicationIcons& icons() const override { return icons_; }

  Clock& clock() override { return clock_; }

  Preferences& preferences() override { return preferences_; }

 private:
  void play(const std::stop_token& end);

  desktop::SteadyClock clock_;
  simulated::SimulatedHardware audio_;
  simulated::SimulatedServer server_;
  simulated::SimulatedProcesses processes_;
  simulated::SimulatedBundle bundle_{"com.quellmarsh.sonvel"};
  simulated::SimulatedApplications applications_;
  simulated::SimulatedApplicationIcons icons_;
  simulated::SimulatedPreferences preferences_;
  std::jthread player_; ///< last member: joins before the objects it uses are destroyed
};

} // namespace sonvel
