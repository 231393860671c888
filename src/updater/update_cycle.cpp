#include "updater/update_cycle.h"

#include <charconv>
#include <utility>

namespace sonvel::updater {
namespace {

using std::chrono::hours;
using std::chrono::minutes;
using std::chrono::seconds;

constexpr qint64 kMaximumFeedBytes = 4LL * 1024 * 1024;
constexpr Clock::Duration kStallTimeout = seconds(30);

const std::string kSeenCounterKey = "com.quellmarsh.sonvel.updateFeedCounter";
const std::string kSeenVersionKey = "com.quellmarsh.sonvel.updateNewestVersion";

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

} // namespace

qint64 SeenReleases::counter() const {
  const std::string text = preferences_.stringForKey(kSeenCounterKey).value_or(std::string());
  qint64 counter = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), counter);
  return error == std::errc() && end == text.data() + text.size() ? counter : 0;
}

std::optional<ProgramVersion> SeenReleases::version() const {
  const auto text = preferences_.stringForKey(kSeenVersionKey);
  return text ? ProgramVersion::parse(QString::fromStdString(*text)) : std::nullopt;
}

void SeenReleases::noteCounter(qint64 counter) {
  if (counter > this->counter()) preferences_.setString(std::to_string(counter), kSeenCounterKey);
}

void SeenReleases::noteVersion(const QString& version) {
  const auto noted = this->version();
  const auto parsed = ProgramVersion::parse(version);
  if (parsed && (!noted || *parsed > *noted)) preferences_.setString(version.toStdString(), kSeenVersionKey);
}

UpdateCycle::UpdateCycle(const UpdaterEnvironment& environment, QUrl feed, QList<PublicKey> keys,
                         AllowedChannels allowedChannels, CheckEnded checkEnded)
    : environment_(environment)
    , feed_(std::move(feed))
    , keys_(std::move(keys))
    , allowedChannels_(std::move(allowedChannels))
    , checkEnded_(std::move(checkEnded))
    , seen_(environment.preferences)
    , relay_(std::make_unique<Relay>(onMainThread())) {
  state_.installedVersion = environment_.installedVersion.toStdString();
  state_.isPackage = environment_.installation.kind == Installation::Kind::package;
}

UpdateCycle::~UpdateCycle() {
  if (point_) point_->callOff();
}

void UpdateCycle::check(Asker asker) {
  if (asker == Asker::user) {
    state_.isUnasked = false;
    if (state_.isVisible && observer_ != nullptr) observer_->updateAttentionWanted();
  }
  if (isBusyWithUpdate(state_.stage)) return tellChange();
  state_.isVisible = state_.isVisible || asker == Asker::user;
  if (state_.stage == UpdateStage::checking) return tellChange();
  // What the user is reading stays until they close it or ask for more.
  if (asker == Asker::schedule && state_.isVisible) return;
  state_.isUnasked = asker == Asker::schedule;
  discardWork();
  const FetchRequest request{.address = feed_,
                             .policy = policyOfFeed(feed_),
                             .maximumBytes = kMaximumFeedBytes,
                             .tooLarge = UpdateFailure::feedTooLarge,
                             .stallTimeout = kStallTimeout,
                             .totalTimeout = minutes(2)};
  fetch_ = std::make_unique<Fetch>(
      network_, environment_.clock, request,
      [this](const QByteArray& piece) {
        feedText_.append(piece);
        return std::optional<UpdateFailure>();
      },
      [this](std::optional<UpdateFailure> failure) { endCheck(failure); });
  enter(UpdateStage::checking);
}

void UpdateCycle::showReturn(UpdateFailure reason) {
  state_.isVisible = true;
  state_.isUnasked = true;
  fail(reason);
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

QDateTime UpdateCycle::now() const {
  const auto sinceEpoch = environment_.calendarTime().time_since_epoch();
  return QDateTime::fromSecsSinceEpoch(std::chrono::duration_cast<seconds>(sinceEpoch).count()).toUTC();
}

void UpdateCycle::endCheck(std::optional<UpdateFailure> failure) {
  fetch_.reset();
  const auto read = failure ? *failure : readFeed();
  if (const auto* fault = std::get_if<UpdateFailure>(&read)) {
    if (checkEnded_) checkEnded_(false);
    return fail(*fault);
  }
  const Choice choice = choose(std::get<Appcast>(read));
  if (checkEnded_) checkEnded_(!choice.fault);
  if (choice.item) return offer(*choice.item);
  if (choice.fault) return fail(*choice.fault);
  enter(choice.needsNewerSystem ? UpdateStage::needsNewerSystem : UpdateStage::upToDate);
}

/// Parses nothing of the feed before its signature is verified.
std::variant<Appcast, UpdateFailure> UpdateCycle::readFeed() {
  const auto verified = verifiedFeed(std::exchange(feedText_, QByteArray()), keys_);
  if (!verified) return UpdateFailure::feedNotSigned;
  auto appcast = readAppcast(*verified);
  if (!appcast) return UpdateFailure::feedUnreadable;
  if (appcast->product != environment_.product) return UpdateFailure::feedOfOtherProgram;
  if (appcast->counter < seen_.counter()) return UpdateFailure::feedOlderThanSeen;
  seen_.noteCounter(appcast->counter);
  if (appcast->expires <= now()) return UpdateFailure::feedExpired;
  return *std::move(appcast);
}

Choice UpdateCycle::choose(const Appcast& appcast) const {
  const auto installed = ProgramVersion::parse(environment_.installedVersion);
  const auto system = ProgramVersion::parse(environment_.systemVersion);
  if (!installed || !system) return {};
  return chooseUpdate(appcast, {.installed = *installed,
                                .newestSeen = seen_.version(),
                                .allowedChannels = allowedChannels_(),
                                .system = *system,
                                .architecture = environment_.architecture,
                                .policy = policyOfFeed(feed_),
                                .now = now()});
}

void UpdateCycle::offer(const AppcastItem& item) {
  seen_.noteVersion(item.version);
  item_ = item;
  state_.offeredVersion = item.shortVersion.toStdString();
  state_.notes = item.notes.toStdString();
  state_.totalBytes = item.length;
  state_.receivedBytes = 0;
  state_.isVisible = true;
  enter(UpdateStage::available);
}

void UpdateCycle::download() {
  file_ = std::make_unique<UpdateFile>();
  const FetchRequest request{.address = item_.address,
                             .policy = policyOfFeed(feed_),
                             .maximumBytes = item_.length,
                             .tooLarge = UpdateFailure::wrongLength,
                             .stallTimeout = kStallTimeout,
                             .totalTimeout = hours(2)};
  fetch_ = std::make_unique<Fetch>(
      network_, environment_.clock, request,
      [this](const QByteArray& piece) {
        const auto failure = file_->append(piece);
        state_.receivedBytes = file_->size();
        tellChange();
        return failure;
      },
      [this](std::optional<UpdateFailure> failure) { failure ? fail(*failure) : verify(); });
  enter(UpdateStage::downloading);
}

void UpdateCycle::verify() {
  fetch_.reset();
  if (file_->size() != item_.length) return fail(UpdateFailure::wrongLength);
  using Verified = std::shared_ptr<const VerifiedUpdate>;
  const auto work = [file = std::shared_ptr<UpdateFile>(std::move(file_)), hash = item_.hash] {
    return std::move(*file).verify(hash);
  };
  runAside<Verified>(*relay_, work, [this](Verified verified) {
    if (!verified) return fail(UpdateFailure::wrongContent);
    verified_ = std::move(verified);
    enter(UpdateStage::ready);
  });
  enter(UpdateStage::verifying);
}

void UpdateCycle::install() {
  if (state_.isPackage) {
    if (!isPackage(*verified_)) return fail(UpdateFailure::wrongKindOfFile);
    if (!environment_.packageInstaller.install(verified_)) return fail(UpdateFailure::noPackageInstaller);
    discardWork();
    return enter(UpdateStage::handedOver);
  }
  point_ = std::make_shared<PointOfNoReturn>();
  const auto work = [update = verified_, program = environment_.installation.program, point = point_] {
    return replaceProgram(program, *update, *point);
  };
  runAside<std::optional<UpdateFailure>>(
      *relay_, work, [this](std::optional<UpdateFailure> failure) { finishProgram(failure); });
  enter(UpdateStage::installing);
}

void UpdateCycle::finishProgram(std::optional<UpdateFailure> failure) {
  if (failure) return fail(*failure);
  discardWork();
  environment_.relaunch.request(environment_.installation.program);
  enter(UpdateStage::restarting);
  environment_.requestQuit();
}

void UpdateCycle::discardWork() {
  relay_ = std::make_unique<Relay>(onMainThread());
  fetch_.reset();
  feedText_.clear();
  file_.reset();
  verified_.reset();
  point_.reset();
}

} // namespace sonvel::updater
