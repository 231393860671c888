#include "updater/update_cycle.h"

#include <utility>

namespace sonvel::updater {
namespace {

bool isBusyWithUpdate(UpdateStage stage) {
  switch (stage) {
  case UpdateStage::available:
  case UpdateStage::downloading:
  case UpdateStage::verifying:
  case UpdateStage::ready:
  case UpdateStage::installing:
  case UpdateStage::restarting:
    return true;
  default:
    return false;
  }
}

/// What a second verification's failure means: the first had passed.
std::optional<UpdateFailure>
failureOfChange(const std::variant<VerifiedUpdate, UpdateFailure>& verification) {
  if (std::holds_alternative<VerifiedUpdate>(verification)) return std::nullopt;
  return UpdateFailure::changedAfterCheck;
}

} // namespace

UpdateCycle::UpdateCycle(const UpdaterEnvironment& environment, QUrl feed, std::optional<PublicKey> key,
                         AllowedChannels allowedChannels, CheckEnded checkEnded)
    : environment_(environment)
    , feed_(std::move(feed))
    , key_(key)
    , allowedChannels_(std::move(allowedChannels))
    , checkEnded_(std::move(checkEnded))
    , relay_(std::make_unique<Relay>()) {
  state_.installedVersion = environment_.installedVersion.toStdString();
  state_.isPackage = environment_.installation.kind == Installation::Kind::package;
}

UpdateCycle::~UpdateCycle() {
  if (point_) point_->callOff();
}

void UpdateCycle::check(Asker asker) {
  if (asker == Asker::user && state_.isVisible && observer_ != nullptr) observer_->updateAttentionWanted();
  if (isBusyWithUpdate(state_.stage)) return;
  state_.isVisible = state_.isVisible || asker == Asker::user;
  if (state_.stage == UpdateStage::checking) return tellChange();
  // What the user reads stays until they close it or ask for more.
  if (asker == Asker::schedule && state_.isVisible) return;
  discardWork();
  feedCheck_ =
      std::make_unique<FeedCheck>(network_, environment_.clock, feed_,
                                  [this](const FeedCheck::Outcome& outcome) { showChoice(outcome); });
  enter(UpdateStage::checking);
}

void UpdateCycle::proceed() {
  switch (state_.stage) {
  case UpdateStage::available:
    return download();
  case UpdateStage::ready:
    return install();
  case UpdateStage::failed:
    return check(Asker::user);
  default:
    return;
  }
}

void UpdateCycle::cancel() {
  if (state_.stage == UpdateStage::restarting || (point_ && !point_->callOff())) return;
  discardWork();
  state_.isVisible = false;
  enter(UpdateStage::idle);
}

void UpdateCycle::tellChange() {
  if (observer_ != nullptr) observer_->updateStateChanged();
}

void UpdateCycle::enter(UpdateStage stage) {
  state_.stage = stage;
  if (stage != UpdateStage::failed) state_.failure.reset();
  tellChange();
}

void UpdateCycle::fail(UpdateFailure failure) {
  discardWork();
  state_.failure = failure;
  enter(UpdateStage::failed);
}

void UpdateCycle::showChoice(const FeedCheck::Outcome& outcome) {
  const FeedCheck::Outcome result = outcome; // the check goes with what it told
  feedCheck_.reset();
  const Appcast* appcast = std::get_if<Appcast>(&result);
  if (checkEnded_) checkEnded_(appcast != nullptr);
  if (appcast == nullptr) return fail(std::get<UpdateFailure>(result));

  const auto installed = ProgramVersion::parse(environment_.installedVersion);
  const auto system = ProgramVersion::parse(environment_.systemVersion);
  if (!installed || !system) return enter(UpdateStage::upToDate);
  const Choice choice = chooseUpdate(
      *appcast, {.installed = *installed, .allowedChannels = allowedChannels_(), .system = *system});
  if (choice.item) return offer(*choice.item);
  enter(choice.needsNewerSystem ? UpdateStage::needsNewerSystem : UpdateStage::upToDate);
}

void UpdateCycle::offer(const AppcastItem& item) {
  // A faulty offer is the feed's matter: nobody is asked to take it first.
  if (const auto fault = faultOf(item, policyOfFeed(feed_))) return fail(*fault);
  item_ = item;
  state_.offeredVersion = item.shortVersion.toStdString();
  state_.notes = item.notes.toStdString();
  state_.totalBytes = item.length;
  state_.receivedBytes = 0;
  state_.isVisible = true;
  enter(UpdateStage::available);
}

void UpdateCycle::download() {
  const auto progress = [this](qint64 receivedBytes) {
    state_.receivedBytes = receivedBytes;
    tellChange();
  };
  download_ = std::make_unique<UpdateDownload>(
      network_, environment_.clock, environment_.downloadFolder, item_, policyOfFeed(feed_), progress,
      [this](std::optional<UpdateFailure> failure) { verify(failure); });
  enter(UpdateStage::downloading);
}

void UpdateCycle::verify(std::optional<UpdateFailure> failure) {
  if (failure) return fail(*failure);
  if (!key_) return fail(UpdateFailure::wrongSignature);
  relay_->runAside<std::optional<UpdateFailure>>(
      [file = download_->file(), expected = expectation(), key = *key_]() -> std::optional<UpdateFailure> {
        const Verification verification = verifyFile(file, expected, key);
        if (const auto* wrong = std::get_if<UpdateFailure>(&verification)) return *wrong;
        return std::nullopt;
      },
      [this](std::optional<UpdateFailure> wrong) {
        if (wrong) return fail(*wrong);
        enter(UpdateStage::ready);
      });
  enter(UpdateStage::verifying);
}

void UpdateCycle::install() {
  if (!key_) return fail(UpdateFailure::wrongSignature);
  const auto verifyAgain = [file = download_->file(), expected = expectation(), key = *key_] {
    return verifyFile(file, expected, key);
  };
  point_ = std::make_shared<PointOfNoReturn>();
  if (state_.isPackage) {
    using Package = std::variant<std::filesystem::path, UpdateFailure>;
    const std::filesystem::path folder = download_->file().parent_path();
    relay_->runAside<Package>(
        [verifyAgain, folder, point = point_]() -> Package {
          const Verification verification = verifyAgain();
          if (const auto changed = failureOfChange(verification)) return *changed;
          return writePackage(folder, std::get<VerifiedUpdate>(verification), *point);
        },
        [this](const Package& package) { finishPackage(package); });
  } else {
    relay_->runAside<std::optional<UpdateFailure>>(
        [verifyAgain, program = environment_.installation.program,
         point = point_]() -> std::optional<UpdateFailure> {
          const Verification verification = verifyAgain();
          if (const auto changed = failureOfChange(verification)) return *changed;
          return replaceProgram(program, std::get<VerifiedUpdate>(verification), *point);
        },
        [this](std::optional<UpdateFailure> failure) { finishProgram(failure); });
  }
  enter(UpdateStage::installing);
}

void UpdateCycle::finishProgram(std::optional<UpdateFailure> failure) {
  if (failure) return fail(*failure);
  discardWork();
  environment_.relaunch.request(environment_.installation.program);
  enter(UpdateStage::restarting);
  environment_.requestQuit();
}

void UpdateCycle::finishPackage(const std::variant<std::filesystem::path, UpdateFailure>& package) {
  if (const auto* failure = std::get_if<UpdateFailure>(&package)) return fail(*failure);
  // The folder goes when the installer is done with it, or at the next start where nobody says when.
  const std::shared_ptr<DownloadFolder> folder = download_->takeFolder();
  folder->keep();
  const auto finished = [folder] { folder->remove(); };
  if (!environment_.packageInstaller.install(std::get<std::filesystem::path>(package), finished)) {
    folder->remove();
    return fail(UpdateFailure::noPackageInstaller);
  }
  discardWork();
  enter(UpdateStage::handedOver);
}

void UpdateCycle::discardWork() {
  relay_ = std::make_unique<Relay>();
  feedCheck_.reset();
  download_.reset();
  point_.reset();
}

} // namespace sonvel::updater
