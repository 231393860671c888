// Updates the rows from the applications that play.

#include "audio/mixer_math.h"
#include "engine/hardware_controller.h"
#include "model/mixer_view_model.h"

#include <algorithm>
#include <unordered_set>

namespace sonvel {
namespace {

/// A row is paused after this many reconciliations without its application.
constexpr int kIdleTicksToPause = 2;

/// The applications that play.
struct Audible {
  Audible() = default;
  Audible(Audible&&) = default; // the text of the keys stays where it is
  Audible& operator=(Audible&&) = default;
  Audible(const Audible&) = delete;
  Audible& operator=(const Audible&) = delete;
  ~Audible() = default;

  /// Each key once, with its first application, in the order of the controller.
  std::vector<std::pair<std::string, AudioApp>> apps;
  std::unordered_set<std::string_view> keys;   ///< of `apps`
  std::unordered_set<AudioObjectID> processes; ///< of all applications
};

/// Called on the controller's thread, because it takes long with many applications.
Audible audible(const HardwareController& controller) {
  auto apps = controller.audibleApps();
  Audible audible;
  audible.apps.reserve(apps.size()); // so that the keys stay where they are
  for (auto& app : apps) {
    audible.processes.insert(app.objectID);
    auto key = stableKey(app);
    if (audible.keys.contains(key)) continue;
    audible.keys.insert(audible.apps.emplace_back(std::move(key), std::move(app)).first);
  }
  return audible;
}

} // namespace

QCoro::Task<> MixerViewModel::reconcile() {
  auto answer = co_await dependencies_.ask(audible);
  if (!answer.value) co_return; // the rows stay unchanged until the next reconciliation
  audibleIDs_ = std::move(answer.value->processes);
  const auto rowsBefore = channels_.rows();

  for (const auto& [key, app] : answer.value->apps) {
    const auto row = rowFor(key, app, rowsBefore);
    if (!row) continue;
    if (row->objectID() != app.objectID) row->setApp(app);
    revive(*row);
    if (permissionGranted() && !row->active()) co_await startTap(row);
  }
  co_await pauseMissingRows(answer.value->keys);
  sortRows();
  setStatus(rowCounts());
}

/// Returns the row of the key and creates it if needed. Null if the user has removed the row since this
/// reconciliation began; the next one creates it again. `rowsBefore` are the rows at the beginning.
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
  if (const auto* const session = reports_.session(key)) followSession(*session, {});
  return row;
}

/// `keys` are those of the applications that play.
QCoro::Task<> MixerViewModel::pauseMissingRows(const std::unordered_set<std::string_view>& keys) {
  const auto rows = channels_.rows();
  for (const auto& row : rows) {
    if (keys.contains(row->stableKey()) || !row->isPlaying() || !channels_.contains(*row)) continue;
    row->setIdleTicks(row->idleTicks() + 1);
    if (row->idleTicks() >= kIdleTicksToPause) co_await pause(row);
  }
}

QCoro::Task<> MixerViewModel::pause(ChannelList::Row row) {
  row->setPlaying(false);
  row->setLevel(0.0F);
  remember(*row);
  if (!row->active()) co_return;
  const ChannelSettings settings(*row);
  const SessionReports::Hold hold(reports_, row->stableKey());
  // One call for both, so that an application that plays again finds either its session or its kept settings.
  auto removal =
      dependencies_.ask([objectID = row->sessionID(), keep = keeping(*row)](HardwareController& controller) {
        controller.removeChannel(objectID);
        keep(controller);
      });
  (void)co_await std::move(removal);
  row->setActive(false);
  row->setLevel(0.0F); // a poll may have set it during the removal
  catchUp(*row, settings);
}

QCoro::Task<> MixerViewModel::startTap(ChannelList::Row row) {
  if (isQuitting_) co_return;
  const auto app = row->app();
  const ChannelSettings settings(*row);
  const SessionReports::Hold hold(reports_, row->stableKey());
  // In a variable, because GCC 12 destroys a capturing lambda twice if it is written inside co_await.
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
  // Meanwhile the row may have been removed, or may represent another process.
  const bool isStillWanted = isWanted(row->stableKey(), app.objectID);
  if (!isStillWanted) sendRemoval(row->stableKey(), app.objectID);
  if (!isStillWanted || !channels_.contains(*row)) co_return;
  row->setActive(true);
  row->setLastError(std::nullopt);
  row->setZeroStreak(0);
  catchUp(*row, settings);
}

/// Whether the session of process `objectID` belongs to the key's row.
bool MixerViewModel::isWanted(const std::string& key, AudioObjectID objectID) const {
  const auto row = channels_.rowWithKey(key);
  if (!row) return false;
  return row->objectID() == objectID || reports_.isOneSession(key, {row->objectID(), objectID});
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
