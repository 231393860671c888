#include "model/model_test.h"

#include <QCoreApplication>
#include <algorithm>

namespace sonvel {

void CountingExecutor::post(std::function<void()> work) {
  ++pending_;
  executor_.post([this, work = std::move(work)]() mutable {
    work();
    work = nullptr; // captured objects are released as part of the work
    --pending_;
  });
}

std::map<std::string, MixerInspector::Settings> MixerInspector::remembered(const MixerViewModel& model) {
  std::map<std::string, Settings> remembered;
  for (const auto& [key, settings] : model.rememberedSettings_)
    remembered[key] = {settings.gainPercent, settings.muted};
  return remembered;
}

bool MixerInspector::isPanelOpen(const MixerViewModel& model) {
  return model.isPanelOpen_;
}

HeldCall::HeldCall(simulated::SimulatedAudio& audio, WhichCall which)
    : audio_(audio)
    , before_(which.after) {
  audio_.setCallHook([this, which](simulated::Call made, AudioObjectID object) {
    if (made != which.call || (which.object && *which.object != object) || before_-- != 0) return;
    isHeld_ = true;
    gate_.acquire();
    isHeld_ = false;
  });
}

HeldCall::~HeldCall() {
  audio_.setCallHook(nullptr);
}

MixerTest::MixerTest() {
  audio_.addDevice({.uid = "speakers", .name = "Speakers", .volumes = {{kElementMain, {0.5F}}}});
  audio_.addDevice({.uid = "headset", .name = "Headset"});
  actor_ = std::make_shared<Actor<HardwareController>>(
      AudioEnvironment{audio_, processes_, bundle_, applications_}, std::ref(clock_));
  model_ = std::make_shared<MixerViewModel>(
      MixerDependencies{actor_, mainThread_, clock_, permission_, preferences_, updates_});
}

/// Lets everything that the test has left running end, and with it the model.
MixerTest::~MixerTest() {
  const std::weak_ptr weakModel = model_;
  model_.reset();
  audio_.clearFailures();
  EXPECT_TRUE(settle());
  clock_.advance(kMonitorInterval);
  EXPECT_TRUE(settle());
  EXPECT_TRUE(weakModel.expired()) << "something holds the model for ever";
  EXPECT_EQ(clock_.pendingCount(), 0U) << "something waits for ever";
}

AudioObjectID MixerTest::play(const std::string& name, const std::string& bundleID, float sample) {
  const auto pid = nextPid_++;
  applications_.addApplication({.processID = pid, .bundleIdentifier = bundleID, .localizedName = name});
  return audio_.addProcess(
      {.pid = pid, .bundleID = bundleID, .streams = {simulated::constantSignal(sample, sample)}});
}

bool MixerTest::settle() {
  for (;;) {
    // One round for the calls to the actor, two for what follows from them; then their replies are posted.
    for (int round = 0; round < 3; ++round)
      actor_->call([](HardwareController&) {}).get();
    if (mainThread_.pending() == 0) return true;
    if (!pumpUntil([this] { return mainThread_.pending() == 0; })) return false;
  }
}

bool MixerTest::pumpUntil(const std::function<bool()>& condition) {
  const auto end = std::chrono::steady_clock::now() + kDeadline;
  while (!condition()) {
    if (std::chrono::steady_clock::now() > end) return false;
    QCoreApplication::processEvents();
  }
  return true;
}

void MixerTest::pump() {
  EXPECT_TRUE(pumpUntil([this] { return mainThread_.pending() == 0; }));
}

void MixerTest::openPanel() {
  model_->onAppear();
  ASSERT_TRUE(settle());
}

void MixerTest::pass(Clock::Duration duration) {
  clock_.advance(duration);
  ASSERT_TRUE(settle());
}

void MixerTest::passTicks(int count) {
  for (int i = 0; i < count; ++i)
    pass(kTick);
}

float MixerTest::heard(const std::string& deviceUID) {
  audio_.runCycle(64);
  const auto frames = audio_.heard(deviceUID);
  return frames.empty() ? 0.0F : frames.back().left;
}

ChannelState* MixerTest::row(const std::string& stableKey) const {
  const auto row = model_->channels()->rowWithKey(stableKey);
  if (!row) ADD_FAILURE() << "no row " << stableKey;
  return row.get();
}

std::vector<std::string> MixerTest::rowNames() const {
  std::vector<std::string> names;
  for (const auto& row : model_->channels()->rows())
    names.push_back(row->app().name);
  return names;
}

std::vector<AudioObjectID> MixerTest::controlled() {
  return actor_->call(&HardwareController::controlledAppIDs).get();
}

long MixerTest::calls(simulated::Call call, std::uint32_t selector) const {
  return std::ranges::count_if(audio_.log(), [=](const auto& made) {
    return made.call == call && (selector == 0 || made.address.selector == selector);
  });
}

} // namespace sonvel
