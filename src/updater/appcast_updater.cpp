#include "updater/appcast_updater.h"

#include <utility>

namespace sonvel::updater {

AppcastUpdater::AppcastUpdater(const UpdaterEnvironment& environment, const UpdateSource& source,
                               std::weak_ptr<const UpdaterDelegate> delegate,
                               const MakeUpdateSurface& makeSurface)
    : delegate_(std::move(delegate))
    , cycle_(
          environment, QUrl(QString::fromStdString(source.feedURL), QUrl::StrictMode),
          PublicKey::fromBase64(source.publicKey), [this] { return allowedChannels(); },
          [this](bool succeeded) { noteCheck(succeeded); })
    , schedule_(environment.clock, environment.preferences, environment.calendarTime,
                [this] { cycle_.check(UpdateCycle::Asker::schedule); })
    , surface_(makeSurface ? makeSurface(cycle_) : nullptr) {
  DownloadFolder::sweep(environment.downloadFolder);
  if (environment.installation.kind == Installation::Kind::singleFile)
    forgetPreviousProgram(environment.installation.program);
}

void AppcastUpdater::checkForUpdates() {
  cycle_.check(UpdateCycle::Asker::user);
}

void AppcastUpdater::noteCheck(bool succeeded) {
  if (succeeded) schedule_.noteDone();
}

std::set<std::string> AppcastUpdater::allowedChannels() const {
  const auto delegate = delegate_.lock();
  return delegate ? delegate->allowedChannels(*this) : std::set<std::string>();
}

AppcastUpdaterProvider::AppcastUpdaterProvider(UpdaterEnvironment environment, MakeUpdateSurface makeSurface)
    : environment_(std::move(environment))
    , makeSurface_(std::move(makeSurface)) {}

std::unique_ptr<StandardUpdater>
AppcastUpdaterProvider::startUpdater(const UpdateSource& source,
                                     std::weak_ptr<const UpdaterDelegate> delegate) {
  return std::make_unique<AppcastUpdater>(environment_, source, std::move(delegate), makeSurface_);
}

} // namespace sonvel::updater
