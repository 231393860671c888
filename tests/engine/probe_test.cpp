#include "engine/controller_test.h"
#include "engine/probe_callback_realtime.h"

#include <array>
#include <limits>
#include <utility>

namespace sonvel {

namespace {

using namespace std::chrono_literals;

class Probe : public ControllerTest {
 protected:
  /// Starts a probe; its answer is stored in `answer_`.
  void begin() {
    controller_->probeCapture([this](std::optional<bool> answer) { answers_.push_back(answer); });
  }

  std::vector<std::optional<bool>> answers_;
};

} // namespace

TEST_F(Probe, TellsWhetherTheFirstApplicationIsHeardAndLeavesItAsItIs) {
  struct Case {
    float sample;
    int cycles;
    bool expected;
  };

  for (const auto& [sample, cycles, expected] :
       {Case{0.2F, 1, true}, Case{-0.2F, 3, true}, Case{0.0F, 3, false}, Case{0.2F, 0, false}}) {
    SCOPED_TRACE(testing::Message() << sample << " for " << cycles << " cycles");
    const auto app = playingApp(87, sample);
    begin();
    for (int cycle = 0; cycle < cycles; ++cycle)
      EXPECT_EQ(heard("speakers"), sample);
    advance(599ms);
    EXPECT_TRUE(answers_.empty());
    advance(1ms);
    EXPECT_EQ(std::exchange(answers_, {}), std::vector<std::optional<bool>>{expected});
    EXPECT_TRUE(audio_.isClean());
    audio_.removeProcess(app.objectID);
  }
}

TEST_F(Probe, KeepsTheLargestSampleOfAllCyclesAndCountsNoneThatIsNoNumber) {
  MixMetrics metrics;
  std::array samples{0.1F, std::numeric_limits<float>::quiet_NaN(), -0.7F, 0.0F};
  std::array buffers{AudioBuffer{}, AudioBuffer{.channelCount = 1, .sizeBytes = 15, .data = samples.data()}};
  probeCycle(metrics, {buffers});
  samples.fill(0.2F);
  probeCycle(metrics, {buffers});
  EXPECT_EQ(metrics.inPeak(), 0.7F);
  EXPECT_EQ(metrics.cycles(), 2);
}

TEST_F(Probe, ListensToTheFirstApplicationAloneIfThereIsOne) {
  begin();
  EXPECT_EQ(std::exchange(answers_, {}), std::vector<std::optional<bool>>{std::nullopt});
  EXPECT_TRUE(changes().empty());
  playingApp(87, 0.0F, 512);
  playingApp(88, 0.5F, 513);
  begin();
  audio_.runCycle();
  advance(600ms);
  EXPECT_EQ(answers_, std::vector<std::optional<bool>>{false});
}

TEST_F(Probe, OthersAreServedMeanwhileAndItsEndIsAnswered) {
  const auto app = playingApp(87);
  begin();
  addChannel(app);
  EXPECT_TRUE(controller_->removeChannel(app.objectID)->restored());
  controller_.reset();
  EXPECT_EQ(answers_, std::vector<std::optional<bool>>{false});
  EXPECT_TRUE(audio_.isClean());
}

} // namespace sonvel
