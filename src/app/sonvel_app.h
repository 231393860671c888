#pragma once

#include "app/app_delegate.h"
#include "app/app_updates.h"
#include "app/panel_host.h"
#include "app/program_audio.h"
#include "app/quit_deadline.h"
#include "app/quit_requests.h"
#include "desktop/consent_library.h"
#include "model/qt_executor.h"

#include <memory>

namespace sonvel {

/// The machine that the program runs on.
enum class Machine {
  real,
  simulated, ///< in memory, without sound
};

/// The program: creates and connects the implementations and owns them from start to end. One per process.
/// Main thread, with a QApplication.
class SonvelApp final : private TerminatingApplication {
 public:
  /// Creates everything and shows the tray icon. `relaunch` records that a new version is to start
  /// afterwards; `deadline` receives requests to quit; both outlive this object. Throws std::runtime_error if
  /// sound can't be set up.
  SonvelApp(updater::Relaunch& relaunch, QuitDeadline& deadline, Machine machine = Machine::real);

  /// Waits for the work that still runs.
  ~SonvelApp() override;

  SonvelApp(const SonvelApp&) = delete;
  SonvelApp& operator=(const SonvelApp&) = delete;

  /// Runs until a request to quit has come and every application has its own output back. Returns the exit
  /// code.
  int run();

  /// False if the program is about to end.
  bool showPanel();

  /// The model behind the panel, also used by the D-Bus interface.
  std::shared_ptr<MixerViewModel> model() const { return delegate_->weakModel().lock(); }

  /// Asks the program to quit. Returns at once; repeated calls have no effect.
  void terminate();

 private:
  void replyToApplicationShouldTerminate(bool mayTerminate) override;

  QuitDeadline& deadline_;
  const std::unique_ptr<ProgramAudio> audio_;
  desktop::ConsentLibrary consent_;
  AudioPermission permission_;
  desktop::PortalAppearance appearance_;
  QtExecutor mainThread_;
  AppUpdates updates_;
  std::shared_ptr<Actor<HardwareController>> hardware_;
  std::shared_ptr<AppDelegate> delegate_;
  std::unique_ptr<PanelHost> panel_;
  QuitRequests quitRequests_;
  bool isTerminating_ = false; ///< the panel has ended too
};

} // namespace sonvel
