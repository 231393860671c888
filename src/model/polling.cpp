#include "model/polling.h"

#include "audio/mixer_math.h"
#include "engine/hardware_controller.h"
#include "model/clock_sleep.h"

#include <algorithm>

namespace sonvel {
namespace {

constexpr std::chrono::milliseconds kTickInterval{120};
constexpr unsigned kTicksPerMasterRefresh = 5;
constexpr unsigned kTicksPerReconciliation = 10;

/// Consecutive silent polls after which a tap counts as broken.
constexpr int kZeroStreakToRebuild = 12;

/// The largest peak of the row's processes. Processes missing from `peaks` are silent.
float largestPeak(const ChannelState& row, const std::vector<ProcessPeak>& peaks) {
  float largest = 0.0F;
  for (const auto process : row.processes()) {
    const auto found = std::ranges::lower_bound(peaks, process, {}, &ProcessPeak::first);
    if (found != peaks.end() && found->first == process) largest = std::max(largest, found->second);
  }
  return largest;
}

} // namespace

Polling::Polling(const MixerDependencies& dependencies, const ChannelList& channels,
                 const std::unordered_set<AudioObjectID>& audibleIDs, Duties duties)
    : dependencies_(dependencies)
    , channels_(channels)
    , audibleIDs_(audibleIDs)
    , duties_(std::move(duties)) {}

void Polling::start(const std::shared_ptr<Polling>& self) {
  cancel();
  task_ = startTask(dependencies_.mainThread,
                    [weakSelf = std::weak_ptr(self), &clock = dependencies_.clock,
                     &mainThread = dependencies_.mainThread](std::stop_token cancellation) {
                      return run(weakSelf, clock, mainThread, std::move(cancellation));
                    });
}

void Polling::cancel() {
  if (task_) task_->cancel();
  task_.reset();
}

QCoro::Task<> Polling::run(std::weak_ptr<Polling> weakSelf, Clock& clock, Executor& mainThread,
                           std::stop_token cancellation) {
  for (unsigned tick = 0; !cancellation.stop_requested(); ++tick) {
    const auto self = weakSelf.lock();
    if (!self) co_return;
    co_await self->pollMeters();
    if (tick % kTicksPerMasterRefresh == 0) co_await self->duties_.refreshMaster();
    if (tick % kTicksPerReconciliation == 0) co_await self->duties_.reconcile();
    co_await ClockSleep(clock, mainThread, kTickInterval, cancellation);
  }
}

QCoro::Task<> Polling::pollMeters() {
  const auto peaks = co_await dependencies_.ask(&HardwareController::peaks);
  if (!peaks.value) co_return; // the meters keep their values until the next poll
  std::vector<ChannelList::Row> broken;
  for (const auto& row : channels_.rows()) {
    if (!row->active()) continue;
    const float peak = largestPeak(*row, *peaks.value);
    row->setLevel(MixerMath::meterLevel(peak));
    // What plays of a partial row may be what can't be controlled.
    const bool isSilentWhilePlaying =
        !(peak > 0.0F) && audibleIDs_.contains(row->objectID()) && !row->playback().isPartial;
    const int streak = isSilentWhilePlaying ? row->zeroStreak() + 1 : 0;
    if (streak >= kZeroStreakToRebuild) broken.push_back(row);
    if (streak != row->zeroStreak()) row->setZeroStreak(streak % kZeroStreakToRebuild);
  }
  for (const auto& row : broken)
    if (row->active()) co_await duties_.rebuild(row);
}

} // namespace sonvel
