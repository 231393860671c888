#include "updater/appcast_updater.h"

#include <algorithm>
#include <charconv>
#include <string>
#include <utility>

namespace sonvel::updater {
namespace {

using std::chrono::seconds;

constexpr seconds kPeriod = std::chrono::hours(24);
constexpr seconds kLongestWait = std::chrono::hours(1);
constexpr seconds kAfterStart = seconds(10); // lets the program's own start finish first
const std::string kLastCheckKey = "com.quellmarsh.sonvel.lastUpdateCheck";

seconds sinceEpoch(std::chrono::system_clock::time_point time) {
  return std::chrono::duration_cast<seconds>(time.time_since_epoch());
}

/// Longer than Relaunch watches, so that this program deletes the previous one only if nobody watched.
constexpr seconds kProvenAfter = seconds(90);

QList<PublicKey> keysOf(const UpdateSource& source) {
  QList<PublicKey> keys;
  for (const std::string& text : {source.publicKey, source.additionalPublicKey})
    if (const auto key = PublicKey::fromBase64(text)) keys.append(*key);
  return keys;
}

} // namespace

DailySchedule::DailySchedule(Clock& clock, Preferences& preferences, CalendarTime calendarTime,
                             std::function<void()> due)
    : clock_(clock)
    , preferences_(preferences)
    , calendarTime_(std::move(calendarTime))
    , due_(std::move(due)) {
  wait(std::clamp(untilDue(), kAfterStart, kLongestWait));
}

void DailySchedule::noteDone() {
  preferences_.setString(std::to_string(sinceEpoch(calendarTime_()).count()), kLastCheckKey);
}

/// Zero if due; also if the last time is unknown or in the future.
seconds DailySchedule::untilDue() const {
  const std::string text = preferences_.stringForKey(kLastCheckKey).value_or(std::string());
  seconds::rep last = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), last);
  const seconds now = sinceEpoch(calendarTime_());
  if (error != std::errc() || end != text.data() + text.size() || last < 0 || last > now.count())
    return seconds(0);
  return std::max(kPeriod - (now - seconds(last)), seconds(0));
}

void DailySchedule::wait(seconds delay) {
  timer_ = clock_.callAfter(delay, relay_.bind([this] { look(); }));
}

void DailySchedule::look() {
  const seconds remaining = untilDue();
  wait(remaining > seconds(0) ? std::min(remaining, kLongestWait) : kLongestWait);
  if (remaining == seconds(0)) due_();
}

AppcastUpdater::AppcastUpdater(const UpdaterEnvironment& environment, const UpdateSource& source,
                               std::weak_ptr<const UpdaterDelegate> delegate,
                               const MakeUpdateSurface& makeSurface)
    : delegate_(std::move(delegate))
    , cycle_(
          environment, QUrl(QString::fromStdString(source.feedURL), QUrl::StrictMode), keysOf(source),
          [this] { return allowedChannels(); },
          [this](bool succeeded) {
            if (succeeded) schedule_.noteDone();
          })
    , schedule_(environment.clock, environment.preferences, environment.calendarTime,
                [this] { cycle_.check(UpdateCycle::Asker::schedule); })
    , surface_(makeSurface ? makeSurface(cycle_) : nullptr) {
  if (const auto reason = takeReasonOfReturn()) cycle_.showReturn(*reason);
  if (environment.installation.kind != Installation::Kind::singleFile) return;
  const auto forget = [program = environment.installation.program] { forgetPreviousProgram(program); };
  proof_ = environment.clock.callAfter(kProvenAfter, relay_.bind(forget));
}

void AppcastUpdater::checkForUpdates() {
  cycle_.check(UpdateCycle::Asker::user);
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
