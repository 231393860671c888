#include "app/sonvel_app.h"

#include "app/desktop_audio.h"
#include "app/simulated_machine.h"
#include "engine/hardware_controller.h"
#include "pipewire/graph_log.h"
#include "ui/icons/icon_themes.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QGuiApplication>
#include <QIcon>
#include <utility>

namespace sonvel {

namespace {

std::unique_ptr<ProgramAudio> make(Machine machine) {
  if (machine == Machine::simulated) return std::make_unique<SimulatedMachine>();
  return std::make_unique<DesktopAudio>();
}

} // namespace

SonvelApp::SonvelApp(updater::Relaunch& relaunch, QuitDeadline& deadline, Machine machine)
    : deadline_(deadline)
    , audio_(make(machine))
    , consent_(audio_->server())
    , permission_(consent_)
    , updates_({audio_->bundle(), audio_->clock(), audio_->preferences(), appearance_, relaunch,
                [this] { terminate(); }})
    , hardware_(std::make_shared<Actor<HardwareController>>(audio_->environment(), audio_->clock()))
    , delegate_(std::make_shared<AppDelegate>(MixerDependencies{
          hardware_, mainThread_, audio_->clock(), permission_, audio_->preferences(), updates_}))
    , quitRequests_([this] { terminate(); }) {
  if (machine == Machine::real) hardware_->observe(&pipewire::logBusy);
  completeIconThemes();
  QGuiApplication::setWindowIcon(QIcon(QStringLiteral(":/sonvel/tray/com.quellmarsh.sonvel.svg")));
  panel_ = std::make_unique<PanelHost>(
      delegate_->model(), *audio_, appearance_, mainThread_,
      PanelHost::Actions{.onAudioThread =
                             [&hardware = *hardware_](std::function<void()> work) {
                               (void)hardware.call([work = std::move(work)](HardwareController&) { work(); });
                             },
                         .quit = [this] { terminate(); },
                         .isFoundAgain =
                             machine == Machine::real && QDBusConnection::sessionBus().isConnected()});
  deadline_.setGiveBack([this] { (void)hardware_->call(&HardwareController::teardownAll); });
}

SonvelApp::~SonvelApp() {
  isTerminating_ = true; // from here showPanel() refuses: the panel ends while the loop below runs
  deadline_.setGiveBack(nullptr);
  panel_.reset();
  const auto model = delegate_->weakModel();
  delegate_.reset();
  // Running tasks hold the model; each ends in bounded time.
  while (!model.expired())
    QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
}

int SonvelApp::run() {
  return QCoreApplication::exec();
}

bool SonvelApp::showPanel() {
  if (isTerminating_) return false;
  panel_->show();
  return true;
}

void SonvelApp::terminate() {
  if (std::exchange(isTerminating_, true)) return;
  deadline_.begin();
  panel_->end();
  delegate_->applicationShouldTerminate(*this); // the reply always comes later
}

void SonvelApp::replyToApplicationShouldTerminate(bool mayTerminate) {
  if (!mayTerminate) return;
  quitRequests_.tellDone();
  QCoreApplication::exit(EXIT_SUCCESS);
}

} // namespace sonvel
