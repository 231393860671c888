// Bringing the rows in line with the applications that play.

#include "audio/mixer_math.h"
#include "engine/hardware_controller.h"
#include "model/mixer_view_model.h"

#include <algorithm>
#include <set>

namespace sonvel {
namespace {

/// Reconciliations without its application after which a row is paused.
constexpr int kIdleTicksToPause = 2;

bool hasKey(const std::vector<std::pair<std::string, AudioApp>>& audible, const std::string& key) {
  return std::ranges::find(audible, key, &std::pair<std::string, AudioApp>::first) != audible.end();
}

/// Of the applications that share a key the first one stands for all.
std::vector<std::pair<std::string, AudioApp>> byKey(const std::vector<AudioApp>& apps) {
  std::vector<std::pair<std::string, AudioApp>> audible;
  for (const auto& app : apps)
    if (auto key = stableKey(app); !hasKey(audible, key)) audible.emplace_back(std::move(key), app);
  return audible;
}

} // namespace

MixerViewModel::ChannelSettings::ChannelSettings(const ChannelState& row)
    : gainPercent(row.gainPercent())
    , muted(row.muted())
    , outputUID(row.outputUID()) {}

QCoro::Task<> MixerViewModel::reconcile() {
  const auto apps = co_await dependencies_.ask(&HardwareController::audibleApps);
  if (!apps.value) co_return; // the rows stay until the next reconciliation
  audibleIDs_.clear();
  for (const auto& app : *apps.value)
    audibleIDs_.insert(app.objectID);
  const auto audible = byKey(*apps.value);
  const auto rowsBefore = channels_.rows();

  for (const auto& [key, app] : audible) {
    const auto row = rowFor(key, app, rowsBefore);
    if (!row) continue;
    if (row->objectID() != app.objectID) row->setApp(app);
    row->setIdleTicks(0);
    row->setPlaying(true);
    if (permissionGranted() && !row->active()) co_await startTap(row);
  }
  co_await pauseMissingRows(audible);
  sortRows();
  setStatus(rowCounts());
}

/// The row of the key, made if there is none; two reconciliations may run at once, and one may have made it
/// for the other. Null if the user has removed the row since the reconciliation began: the next one makes a
/// new row.
ChannelList::Row MixerViewModel::rowFor(const std::string& key, const AudioApp& app,
                                        const std::vector<ChannelList::Row>& rowsBefore) {
  if (auto row = channels_.rowWithKey(key)) return row;
  if (std::ranges::any_of(rowsBefore, [&](const auto& row) { return row->stableKey() == key; }))
    return nullptr;

  auto row = std::make_shared<ChannelState>(app);
  if (const auto remembered = rememberedSettings_.find(key); remembered != rememberedSettings_.end()) {
    row->setGainPercent(remembered->second.gainPercent);
    row->setMuted(remembered->second.muted);
  }
  channels_.append(row);
  return row;
}

QCoro::Task<> MixerViewModel::pauseMissingRows(AudibleMap audible) {
  const auto rows = channels_.rows();
  for (const auto& row : rows) {
    if (hasKey(audible, row->stableKey()) || !row->isPlaying() || !channels_.contains(*row)) continue;
    row->setIdleTicks(row->idleTicks() + 1);
    if (row->idleTicks() < kIdleTicksToPause) continue;
    remember(*row);
    row->setPlaying(false);
    row->setLevel(0.0F);
    if (row->active()) {
      (void)co_await dependencies_.ask([objectID = row->objectID()](HardwareController& controller) {
        return controller.removeChannel(objectID);
      });
      row->setActive(false);
      row->setLevel(0.0F); // until here it was metered
    }
  }
}

QCoro::Task<> MixerViewModel::startTap(ChannelList::Row row) {
  if (isQuitting_) co_return;
  const auto app = row->app();
  const ChannelSettings settings(*row);
  // In a variable of its own: GCC 12 destroys a closure twice that is made inside the awaited expression.
  auto start = dependencies_.ask([app, settings](HardwareController& controller) {
    controller.addChannel(app, MixerMath::percentToGain(settings.gainPercent), settings.muted,
                          settings.outputUID);
  });
  const auto started = co_await std::move(start);
  if (started.failure) {
    row->setActive(false);
    row->setLastError(started.failure);
    co_return;
  }
  if (!channels_.contains(*row) || row->objectID() != app.objectID) {
    // Since the start was asked for, the row was removed or has come to stand for another process.
    if (!hasRowFor(app.objectID)) sendRemoval(app.objectID);
    co_return;
  }
  row->setActive(true);
  row->setLastError(std::nullopt);
  row->setZeroStreak(0);
  catchUp(*row, settings);
}

/// Sends what the user has changed since `started` was read, when the row was not active yet.
void MixerViewModel::catchUp(ChannelState& row, const ChannelSettings& started) {
  if (row.gainPercent() != started.gainPercent) sendGain(row);
  if (row.muted() != started.muted) sendMute(row);
  if (row.outputUID() != started.outputUID) (void)sendOutput(shared_from_this(), row.shared_from_this());
}

bool MixerViewModel::hasRowFor(AudioObjectID objectID) const {
  return std::ranges::any_of(channels_.rows(), [=](const auto& row) { return row->objectID() == objectID; });
}

void MixerViewModel::sortRows() {
  channels_.sort([this](const ChannelState& a, const ChannelState& b) {
    if (a.isPlaying() != b.isPlaying()) return a.isPlaying();
    return nameOrder_.compare(a.name(), b.name()) < 0;
  });
}

MixerStatus MixerViewModel::rowCounts() const {
  const auto& rows = channels_.rows();
  if (rows.empty()) return {.event = MixerStatus::Event::noAppsYet};
  const auto playing = std::ranges::count_if(rows, &ChannelState::isPlaying, &ChannelList::Row::operator*);
  return {.event = MixerStatus::Event::appsListed,
          .playing = static_cast<int>(playing),
          .idle = static_cast<int>(std::ssize(rows) - playing)};
}

} // namespace sonvel
