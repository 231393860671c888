#include "model/random_walk.h"

namespace sonvel {

RandomWalkTest::RandomWalkTest() {
  audio_.addDevice({.uid = "usb", .name = "USB", .volumes = {{kElementLeft, {}}, {kElementRight, {}}}});
  // Two applications with one process, two with several processes.
  players_ = {{"Alpha", "com.example.alpha", 0.1F},
              {"beta", "com.example.beta", 0.0313F},
              {"Gamma", "com.example.gamma", 0.0517F},
              {"Browser", "com.example.browser", 0.0737F},
              {"Browser Helper", "com.example.browser.helper", 0.0193F},
              {"Browser Helper (GPU)", "com.example.browser.helper.gpu", 0.0111F},
              {"Delta", "com.example.delta", 0.0023F},
              {"Delta Helper", "com.example.delta.helper", 0.0431F}};
  const auto* const list = model_->channels();
  QObject::connect(list, &ChannelList::rowsInserted, [this, list](const QModelIndex&, int index, int) {
    auto* const row = list->data(list->index(index), ChannelList::ChannelRole).value<ChannelState*>();
    shown_.insert(shown_.begin() + index, row);
  });
  QObject::connect(list, &ChannelList::rowsRemoved,
                   [this](const QModelIndex&, int index, int) { shown_.erase(shown_.begin() + index); });
  QObject::connect(list, &ChannelList::rowsMoved,
                   [this](const QModelIndex&, int from, int, const QModelIndex&, int before) {
                     auto* const moved = shown_.at(static_cast<std::size_t>(from));
                     shown_.insert(shown_.begin() + before, moved);
                     shown_.erase(shown_.begin() + (from < before ? from : from + 1));
                   });
  QObject::connect(list, &ChannelList::modelReset, [] { ADD_FAILURE() << "the list was reset"; });
}

const std::vector<RandomWalkTest::Action>& RandomWalkTest::actions() {
  using Walk = RandomWalkTest;
  static const std::vector<Action> actions{
      {"gain is set", 10, [](Walk& w) { w.model_->setGain(static_cast<int>(w.pick(201)), w.anyRow()); }},
      {"mute is toggled", 6, [](Walk& w) { w.model_->toggleMute(w.anyRow()); }},
      {"row is dismissed", 3, [](Walk& w) { w.model_->dismissChannel(w.anyRow()); }},
      {"output is chosen", 4, [](Walk& w) { w.model_->setOutput(w.anyRoute(), w.anyRow()); }},
      {"master is set", 1, [](Walk& w) { w.model_->setMaster(w.pick(101) / 100.0); }},
      {"volumes are reset", 1,
       [](Walk& w) {
         w.model_->resetAllVolumes();
         for (const auto& row : w.model_->channels()->rows())
           EXPECT_EQ(std::pair(row->gainPercent(), row->muted()), std::pair(100, false));
       }},
      {"everything to system", 1,
       [](Walk& w) {
         w.model_->everythingToSystemOutput();
         EXPECT_TRUE(w.settle());
         for (const auto& row : w.model_->channels()->rows())
           EXPECT_EQ(row->outputUID(), std::nullopt) << row->stableKey();
       }},
      {"panel appears", 3, [](Walk& w) { w.model_->onAppear(); }},
      {"panel disappears", 1, [](Walk& w) { w.model_->onDisappear(); }},
      {"process (re)starts", 8, [](Walk& w) { w.start(w.anyPlayer()); }},
      {"process ends", 2, [](Walk& w) { w.end(w.anyPlayer()); }},
      {"playing changes", 5,
       [](Walk& w) {
         auto& player = w.anyPlayer();
         if (player.process == kAudioObjectUnknown) return;
         player.isPlaying = !player.isPlaying || w.pick(2) == 0;
         w.audio_.setPlaying(player.process, player.isPlaying);
       }},
      {"device comes or goes", 3,
       [](Walk& w) {
         const std::string uid = w.anyOf(kDevices);
         w.note(uid);
         if (w.audio_.deviceWithUID(uid) == kAudioObjectUnknown)
           (void)w.audio_.returnDevice(uid);
         else if (w.pick(3) == 0) // mostly present
           w.audio_.removeDevice(uid);
       }},
      {"default changes", 2,
       [](Walk& w) {
         w.defaultDevice_ = w.anyRoute();
         if (w.defaultDevice_ == "unknown") w.defaultDevice_ = std::nullopt;
         w.audio_.setDefaultDevice(w.defaultDevice_);
       }},
      {"permission changes", 1, [](Walk& w) { w.consent_.setPreflight(w.anyOf(kPreflightCodes)); }},
      {"building fails", 2,
       [](Walk& w) {
         w.audio_.clearFailures();
         w.audio_.fail({.call = w.anyOf(kBuilding), .after = w.pick(3), .times = 1 + w.pick(3)});
       }},
      {"tearing down fails", 1, [](Walk& w) { w.failTearingDown(); }},
      {"failures end", 5, [](Walk& w) { w.audio_.clearFailures(); }},
      {"tick passes", 50, [](Walk& w) { w.clock_.advance(kTick); }},
      {"time passes", 6, [](Walk& w) { w.clock_.advance(w.pick(2) == 0 ? 2s : 5s); }},
  };
  return actions;
}

void RandomWalkTest::walk(const std::function<void()>& finishStep) {
  const auto seed = fromEnvironment("SONVEL_WALK_SEED", kSeed);
  const auto steps = fromEnvironment("SONVEL_WALK_STEPS", kSteps);
  random_.seed(seed);
  for (std::uint64_t i = 0; i < steps; ++i) {
    step();
    finishStep();
    if (HasFailure()) {
      FAIL() << "at step " << i << " with SONVEL_WALK_SEED=" << seed << "; before it:\n"
             << testing::PrintToString(history_);
    }
  }
  audio_.clearFailures();
  pass(1s); // time for a probe to end
  (void)startTask(mainThread_, [this] { return model_->teardownForQuit(); });
  ASSERT_TRUE(settle());
  EXPECT_TRUE(audio_.isClean());
  check();
  EXPECT_LT(skippedHeardChecks_, heardChecks_ / 10) << "too much was not checked by ear";
  EXPECT_GT(heardAtItsGain_, heardChecks_ / 20) << "too little was controlled";
}

void RandomWalkTest::step() {
  unsigned left = 0;
  for (const auto& action : actions())
    left += action.weight;
  left = pick(left);
  const auto* action = actions().data();
  for (; left >= action->weight; ++action)
    left -= action->weight;
  history_.emplace_back(action->name);
  if (history_.size() > kHistoryLength) history_.pop_front();
  audio_.clearLog();
  action->act(*this);
}

/// Fails removals of present sessions only, not the undoing of a failed build nor of a probe.
void RandomWalkTest::failTearingDown() {
  audio_.clearFailures();
  EXPECT_TRUE(settle());
  const auto taps = this->taps();
  if (taps.empty()) return;
  const auto& tap = anyOf(taps);
  audio_.fail({.call = Call::destroyProcessTap, .object = tap.id, .times = 1 + pick(3)});
  for (const auto& aggregate : audio_.aggregates())
    if (aggregate.description.taps.front().uid == tap.uid)
      audio_.fail({.call = anyOf(kTearingDown), .object = aggregate.id, .times = 1 + pick(3)});
}

TEST_F(RandomWalkTest, EverythingHoldsAfterEachStep) {
  walk([this] {
    ASSERT_TRUE(settle());
    check();
  });
}

/// Several events overlap. The seed repeats the events, but not the timing of the threads.
TEST_F(RandomWalkTest, EverythingHoldsAfterStepsThatOvertakeEachOther) {
  walk([this] {
    switch (pick(4)) {
    case 0:
      ASSERT_TRUE(settle());
      return check();
    case 1:
      return pump();
    case 2:
      return audio_.runCycle(16);
    default:
      return;
    }
  });
}

} // namespace sonvel
