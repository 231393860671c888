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

/// What the program runs on.
enum class Machine {
  real,
  simulated, ///< in memory; nothing is heard
};

/// The program: chooses the implementations, joins them, and keeps them from its start to its end. One for
/// the life of the process. Main thread, with a QApplication.
class SonvelApp final : private TerminatingApplication {
 public:
  /// Makes everything and shows the tray icon. `relaunch` is told when a new version is to start after it,
  /// and `deadline` that it was asked to end; both outlive this object. Throws std::runtime_error if sound
  /// can't be set up at all.
  SonvelApp(updater::Relaunch& relaunch, QuitDeadline& deadline, Machine machine = Machine::real);

  /// Lets everything go that is still at work, and waits for it.
  ~SonvelApp() override;

  SonvelApp(const SonvelApp&) = delete;
  SonvelApp& operator=(const SonvelApp&) = delete;

  /// Runs until somebody asks to end and every application has its own output back. The exit code.
  int run();

  /// False when the program is about to end.
  bool showPanel();

  /// What the panel shows, and other programs work.
  std::shared_ptr<MixerViewModel> model() const { return delegate_->weakModel().lock(); }

  /// Asks the program to end. Returns at once; a second time changes nothing.
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
  bool isTerminating_ = false; ///< and the panel has ended
};

} // namespace sonvel
