#include "model/random_walk.h"

namespace sonvel {

void RandomWalkTest::checkRows() const {
  QCollator order;
  order.setCaseSensitivity(Qt::CaseInsensitive);
  const auto& rows = model_->channels()->rows();
  EXPECT_TRUE(std::ranges::equal(rows, shown_, {}, &ChannelList::Row::get));
  EXPECT_TRUE(std::ranges::is_sorted(rows, [&](const auto& a, const auto& b) {
    if (a->isPlaying() != b->isPlaying()) return a->isPlaying();
    return order.compare(a->name(), b->name()) < 0;
  })) << testing::PrintToString(rowNames());
  auto remembered = this->remembered();
  std::set<std::string> keys;
  for (const auto& row : rows) {
    EXPECT_TRUE(keys.insert(row->stableKey()).second) << "two rows of " << row->stableKey();
    EXPECT_EQ(row->stableKey(), stableKey(row->app()));
    EXPECT_TRUE(row->isPlaying() || row->level() == 0.0F) << row->stableKey();
    const auto settings = remembered.extract(row->stableKey());
    EXPECT_TRUE(settings.empty() || settings.mapped() == std::pair(row->gainPercent(), row->muted()));
  }
  EXPECT_TRUE(remembered.empty()) << "settings of a row that has gone";
}

void RandomWalkTest::checkSessions() {
  actor_
      ->call([this](HardwareController& controller) {
        if (controller.restorationFailure()) return; // something could not be undone yet
        EXPECT_EQ(taps().size(), controller.controlledAppIDs().size());
        for (const auto& row : model_->channels()->rows()) {
          EXPECT_EQ(row->active(), controller.isControlled(row->sessionID())) << row->stableKey();
          EXPECT_EQ(controller.outputUID(row->sessionID()), row->active() ? row->outputUID() : std::nullopt);
        }
      })
      .get();
}

void RandomWalkTest::checkSound() {
  audio_.runCycle(16);
  std::map<std::string, std::optional<float>> expected; // by device; none if unpredictable
  for (const std::string uid : kDevices)
    if (audio_.deviceWithUID(uid) != kAudioObjectUnknown) expected[uid] = 0.0F;
  for (const auto& player : players_)
    if (player.isPlaying) expect(player, expected);
  for (const auto& [uid, sample] : expected) {
    ++heardChecks_;
    if (!sample) ++skippedHeardChecks_;
    const float heard = audio_.heard(uid).back().left;
    EXPECT_NEAR(heard, sample.value_or(heard), 1e-5F) << uid;
  }
}

/// Unchanged if no tap has it; otherwise at its row's gain where an IOProc plays its tap.
void RandomWalkTest::expect(const Player& player, std::map<std::string, std::optional<float>>& sound) {
  const auto add = [&](const std::string& uid, std::optional<float> gain) {
    const auto device = sound.find(uid);
    if (device == sound.end() || !device->second) return;
    device->second = gain ? std::optional(*device->second + player.sample * *gain) : std::nullopt;
  };

  auto taps = this->taps();
  std::erase_if(taps, [&](const auto& tap) {
    return !has(tap.description.processes, player.process) &&
           !has(tap.description.bundleIDs, player.bundleID);
  });
  if (taps.empty()) return add(defaultDevice_.value_or(""), 1.0F);
  for (const auto& tap : taps) { // several while an earlier one could not be destroyed
    std::optional<float> gain;
    if (const auto* const row = rowOf(tap))
      gain = row->muted() ? 0.0F : MixerMath::percentToGain(row->gainPercent());
    for (const auto& aggregate : audio_.aggregates()) {
      if (aggregate.description.taps.front().uid != tap.uid) continue;
      for (const auto& ioProc : audio_.ioProcs())
        if (ioProc.device == aggregate.id && ioProc.isStarted) {
          add(aggregate.description.subDevices.front().uid, gain);
          if (gain) ++heardAtItsGain_;
        }
    }
  }
}

} // namespace sonvel
