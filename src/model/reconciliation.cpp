// Bringing the rows in line with the applications that play.

#include "audio/mixer_math.h"
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
  const auto apps = co_await hardware_.audibleApps();
  audibleIDs_.clear();
  for (const auto& app : apps)
    audibleIDs_.insert(app.objectID);
  const auto audible = byKey(apps);
  const auto rowsBefore = channels_.rows();

  for (const auto& [key, app] : audible) {
    const auto row = rowFor(key, app, rowsBefore);
    if (!row) continue;
    if (row->objectID() != app.objectID) row->setApp(app);
    row->setIdleTicks(0);
    row->setPlaying(true);
    if (permissionGranted_ && !row->active()) co_await startTap(row);
  }
  co_await pauseMissingRows(audible);
  sortRows();
  setStatus(rowCounts());
}

/// Null for a row that the user has removed since the reconciliation began: a later one sees the application
/// for the first time. A row that another reconciliation has made meanwhile is the application's row.
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
      (void)co_await hardware_.removeChannel(row->objectID());
      row->setActive(false);
      row->setLevel(0.0F); // until here it was metered
    }
  }
}

QCoro::Task<> MixerViewModel::startTap(ChannelList::Row row) {
  if (isQuitting_) co_return;
  const auto app = row->app();
  const ChannelSettings settings(*row);
  try {
    co_await hardware_.addChannel(app, MixerMath::percentToGain(settings.gainPercent), settings.muted,
                                  settings.outputUID);
  } catch (const std::exception& error) {
    row->setActive(false);
    row->setLastError(error.what());
    co_return;
  }
  if (!channels_.contains(*row) || row->objectID() != app.objectID) {
    // The row has gone, or stands for another process, since the start was asked for.
    if (!hasRowFor(app.objectID)) (void)co_await hardware_.removeChannel(app.objectID);
    co_return;
  }
  row->setActive(true);
  row->setLastError(std::nullopt);
  row->setZeroStreak(0);
  catchUp(*row, settings);
}

/// Hands on what the user has changed while the row was not active yet, since `started` was read.
void MixerViewModel::catchUp(ChannelState& row, const ChannelSettings& started) {
  if (row.gainPercent() != started.gainPercent) handOnGain(row);
  if (row.muted() != started.muted) handOnMute(row);
  if (row.outputUID() != started.outputUID) handOnOutput(row);
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

QString MixerViewModel::rowCounts() const {
  const auto& rows = channels_.rows();
  if (rows.empty()) return QStringLiteral("No apps have played audio yet.");
  const auto playing = std::ranges::count_if(rows, &ChannelState::isPlaying, &ChannelList::Row::operator*);
  const auto idle = std::ssize(rows) - playing;
  auto text = QString::number(playing) + QStringLiteral(" playing");
  if (idle > 0) text += QStringLiteral(" \u00B7 ") + QString::number(idle) + QStringLiteral(" idle");
  return text;
}

} // namespace sonvel
