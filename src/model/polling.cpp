// The loop that runs while the panel is there: meters, master volume and reconciliation.

#include "audio/mixer_math.h"
#include "model/clock_sleep.h"
#include "model/mixer_view_model.h"

#include <cmath>

namespace sonvel {
namespace {

constexpr std::chrono::milliseconds kTickInterval{120};
constexpr unsigned kTicksPerMasterRefresh = 5;
constexpr unsigned kTicksPerReconciliation = 10;

/// Silent polls in a row at which a tap counts as broken.
constexpr int kZeroStreakToRebuild = 12;

/// Smaller differences are the device's rounding of what the user has set.
constexpr double kMasterVolumeTolerance = 0.02;

} // namespace

void MixerViewModel::startPolling() {
  if (pollTask_) pollTask_->cancel();
  pollTask_ = startTask(dependencies_.mainThread,
                        [weakModel = weak_from_this(), &clock = dependencies_.clock,
                         &mainThread = dependencies_.mainThread](std::stop_token cancellation) {
                          return poll(weakModel, clock, mainThread, std::move(cancellation));
                        });
}

QCoro::Task<> MixerViewModel::poll(std::weak_ptr<MixerViewModel> weakModel, Clock& clock,
                                   Executor& mainThread, std::stop_token cancellation) {
  for (unsigned tick = 0; !cancellation.stop_requested(); ++tick) {
    const auto model = weakModel.lock();
    if (!model) co_return;
    co_await model->pollMeters();
    if (tick % kTicksPerMasterRefresh == 0) co_await model->refreshMaster();
    if (tick % kTicksPerReconciliation == 0) co_await model->reconcile();
    co_await ClockSleep(clock, mainThread, kTickInterval, cancellation);
  }
}

QCoro::Task<> MixerViewModel::pollMeters() {
  const auto peaks = co_await hardware_.peaks();
  const auto rows = channels_.rows();
  for (const auto& row : rows) {
    if (!row->active()) continue;
    const auto found = peaks.find(row->objectID());
    const float peak = found != peaks.end() ? found->second : 0.0F;
    row->setLevel(MixerMath::meterLevel(peak));
    const bool isSilentWhilePlaying = !(peak > 0.0F) && audibleIDs_.contains(row->objectID());
    row->setZeroStreak(isSilentWhilePlaying ? row->zeroStreak() + 1 : 0);
    if (row->zeroStreak() < kZeroStreakToRebuild) continue;
    row->setZeroStreak(0);
    try {
      co_await hardware_.rebuild(row->objectID());
    } catch (const std::exception&) {
      continue; // as many silent polls later it is tried again
    }
  }
}

QCoro::Task<> MixerViewModel::refreshMaster() {
  const auto volume = co_await hardware_.masterVolume();
  setMasterSupported(volume.has_value());
  if (volume && std::abs(double{*volume} - masterVolume_) > kMasterVolumeTolerance) setMasterVolume(*volume);
}

} // namespace sonvel
