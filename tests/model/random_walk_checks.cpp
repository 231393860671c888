// What must hold in a random walk once everything that a step has begun is over.

#include "audio/mixer_math.h"
#include "model/random_walk.h"

#include <QCollator>
#include <algorithm>

namespace sonvel {

void RandomWalk::check() {
  const auto held = sessions();
  followTuning(held);
  checkRows();
  checkRemembered();
  checkObjects(held);
  checkSound();
}

RandomWalk::Sessions RandomWalk::sessions() {
  return actor_
      ->call([](HardwareController& controller) {
        Sessions sessions;
        for (const auto appID : controller.controlledAppIDs())
          sessions.outputUIDs[appID] = controller.outputUID(appID);
        sessions.isRetrying = controller.restorationFailure().has_value();
        return sessions;
      })
      .get();
}

std::vector<simulated::Tap> RandomWalk::sessionTaps() const {
  auto taps = audio_.taps();
  std::erase_if(taps, [](const auto& tap) { return tap.description.name == "SonvelProbe"; });
  return taps;
}

void RandomWalk::checkRows() const {
  QCollator order;
  order.setCaseSensitivity(Qt::CaseInsensitive);
  std::set<std::string> keys;
  const auto& rows = model_->channels()->rows();
  for (const auto& row : rows) {
    EXPECT_TRUE(keys.insert(row->stableKey()).second) << "two rows of " << row->stableKey();
    EXPECT_EQ(row->stableKey(), stableKey(row->app()));
    EXPECT_TRUE(row->isPlaying() || row->level() == 0.0F) << row->stableKey();
  }
  EXPECT_TRUE(std::ranges::is_sorted(rows, [&](const auto& a, const auto& b) {
    if (a->isPlaying() != b->isPlaying()) return a->isPlaying();
    return order.compare(a->name(), b->name()) < 0;
  })) << testing::PrintToString(rowNames());
}

void RandomWalk::checkRemembered() const {
  for (const auto& [key, settings] : remembered()) {
    const auto row = model_->channels()->rowWithKey(key);
    if (row)
      EXPECT_EQ(settings, std::pair(row->gainPercent(), row->muted())) << key;
    else
      ADD_FAILURE() << "settings of " << key << " are remembered without its row";
  }
}

void RandomWalk::checkObjects(const Sessions& held) {
  auto aggregates = audio_.aggregates();
  auto ioProcs = audio_.ioProcs();
  for (const auto& aggregate : aggregates)
    if (aggregate.description.name == "SonvelProbeAgg")
      std::erase_if(ioProcs, [&](const auto& ioProc) { return ioProc.device == aggregate.id; });
  std::erase_if(aggregates, [](const auto& other) { return other.description.name == "SonvelProbeAgg"; });
  std::map<AudioObjectID, int> tapsOf;
  std::set<AudioObjectID> whole;
  std::size_t aggregatesOfTaps = 0;
  for (const auto& tap : sessionTaps()) {
    const auto process = tap.description.processes.front();
    EXPECT_TRUE(held.outputUIDs.contains(process)) << "a tap on " << process << " without a session";
    EXPECT_EQ(++tapsOf[process], 1) << "two taps on " << process;
    for (const auto& aggregate : aggregates) {
      if (aggregate.description.taps.front().uid != tap.uid) continue;
      ++aggregatesOfTaps;
      const auto runs = [&](const auto& ioProc) { return ioProc.device == aggregate.id && ioProc.isStarted; };
      if (std::ranges::count_if(ioProcs, runs) == 1) whole.insert(process);
    }
  }
  std::erase_if(damaged_,
                [&](auto process) { return !held.outputUIDs.contains(process) || whole.contains(process); });
  EXPECT_TRUE(aggregatesOfTaps == aggregates.size() || !damaged_.empty())
      << "an aggregate device is left over";
  EXPECT_TRUE(held.outputUIDs.size() >= aggregates.size() && held.outputUIDs.size() >= ioProcs.size());
  if (held.isRetrying) return;
  for (const auto& [process, outputUID] : held.outputUIDs) {
    EXPECT_TRUE(whole.contains(process) || damaged_.contains(process)) << "half a session of " << process;
    EXPECT_TRUE(!inTune_.contains(process) || outputUID == activeRowOf(process)->outputUID()) << process;
  }
}

ChannelState* RandomWalk::activeRowOf(AudioObjectID process) const {
  for (const auto& row : model_->channels()->rows())
    if (row->active() && row->objectID() == process) return row.get();
  return nullptr;
}

/// A session is in tune from when it is built for a row that was not active, for as long as the row stands
/// for its process.
void RandomWalk::followTuning(const Sessions& held) {
  std::set<AudioObjectID> inTune;
  std::set<AudioObjectID> present;
  for (const auto& [process, outputUID] : held.outputUIDs) {
    present.insert(process);
    const auto* const row = activeRowOf(process);
    if (row == nullptr || turnedToOthers_.contains(row)) continue;
    const bool isNew = !formerSessions_.contains(process) || !formerActiveKeys_.contains(row->stableKey());
    if (isNew || inTune_.contains(process)) inTune.insert(process);
  }
  inTune_ = std::move(inTune);
  formerSessions_ = std::move(present);
  formerActiveKeys_.clear();
  for (const auto& row : model_->channels()->rows())
    if (row->active()) formerActiveKeys_.insert(row->stableKey());
  turnedToOthers_.clear();
}

void RandomWalk::checkSound() {
  audio_.runCycle(16);
  for (const auto& [uid, expected] : expectedSound()) {
    ++heardChecks_;
    if (!expected) {
      ++skippedHeardChecks_;
      continue;
    }
    for (const auto& frame : audio_.heard(uid)) {
      EXPECT_NEAR(frame.left, expected->left, 1e-5F) << uid;
      EXPECT_NEAR(frame.right, expected->right, 1e-5F) << uid;
      if (HasFailure()) return;
    }
  }
}

RandomWalk::Expectation RandomWalk::expectedSound() {
  Expectation expected;
  for (const auto& [uid, isPresent] : devices_)
    if (isPresent) expected[uid] = simulated::Frame{};
  for (const auto& player : players_)
    if (player.process != kAudioObjectUnknown) expectPlayer(player, expected);
  return expected;
}

/// Unaltered where no tap is on it; otherwise wherever an IOProc plays its tap, at the gain of its row.
void RandomWalk::expectPlayer(const Player& player, Expectation& expected) {
  const auto sound = player.sound();
  if (sound == simulated::Frame{}) return;
  const auto add = [&](const std::string& uid, std::optional<float> gain) {
    const auto device = expected.find(uid);
    if (device == expected.end() || !device->second) return;
    if (!gain) return device->second.reset();
    device->second->left += sound.left * *gain;
    device->second->right += sound.right * *gain;
  };

  const auto taps = sessionTaps();
  const auto tap = std::ranges::find(taps, player.process,
                                     [](const auto& other) { return other.description.processes.front(); });
  if (tap == taps.end()) {
    if (defaultDevice_) add(*defaultDevice_, 1.0F);
    return;
  }
  std::optional<float> gain;
  if (inTune_.contains(player.process)) {
    const auto* const row = activeRowOf(player.process);
    gain = row->muted() ? 0.0F : MixerMath::percentToGain(row->gainPercent());
  }
  for (const auto& aggregate : audio_.aggregates()) {
    if (aggregate.description.taps.front().uid != tap->uid) continue;
    for (const auto& ioProc : audio_.ioProcs())
      if (ioProc.device == aggregate.id && ioProc.isStarted) {
        add(aggregate.description.subDevices.front().uid, gain);
        if (gain) ++heardAtItsGain_;
      }
  }
}

} // namespace sonvel
