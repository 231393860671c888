#include "ui/panel_test.h"

#include <QAnimationDriver>

namespace sonvel {
namespace {

/// The time of animations, which stands still but for the test.
class ManualFrames final : public QAnimationDriver {
 public:
  ManualFrames() { install(); }

  ~ManualFrames() override { uninstall(); }

  ManualFrames(const ManualFrames&) = delete;
  ManualFrames& operator=(const ManualFrames&) = delete;

  qint64 elapsed() const override { return elapsed_; }

  void pass(int milliseconds) {
    elapsed_ += milliseconds;
    advanceAnimation();
  }

 protected:
  void start() override {
    elapsed_ = 0;
    QAnimationDriver::start();
  }

 private:
  qint64 elapsed_ = 0; ///< since the last start
};

class MotionTest : public PanelTest {
 protected:
  void SetUp() override {
    appearance_.set({.colorScheme = Appearance::ColorScheme::light});
    openWith({"Alpha"});
    rest();
  }

  QQuickItem* meter() const { return itemNamed("meter"); }

  double shown() const { return meter()->property("shown").toDouble(); }

  /// Animations that are to start do so from the event loop, one behind the other.
  static void begin() {
    for (int i = 0; i < 5; ++i)
      QCoreApplication::processEvents();
  }

  /// Lets everything that is under way come to its end; false if something never does.
  bool rest() {
    constexpr int kFramesOfTenSeconds = 600;
    for (int i = 0; i < kFramesOfTenSeconds; ++i) {
      begin();
      if (!frames_.isRunning()) return true;
      frames_.pass(16);
    }
    return false;
  }

  ManualFrames frames_;
};

TEST_F(MotionTest, AMeterFallsStepByStepAndThenRests) {
  row("org.Alpha")->setLevel(0.8F);
  ASSERT_TRUE(rest());
  EXPECT_NEAR(shown(), 0.8, 1e-6);

  row("org.Alpha")->setLevel(0.0F);
  begin();
  double before = shown();
  int steps = 0;
  for (; frames_.isRunning() && steps < 100; ++steps) {
    frames_.pass(16);
    EXPECT_LE(shown(), before);
    EXPECT_GT(shown(), before - 0.25) << "that was a jump";
    before = shown();
    begin();
  }
  EXPECT_GT(steps, 4);
  EXPECT_LT(steps, 30) << "longer than four readings";
  EXPECT_EQ(shown(), 0.0);
}

TEST_F(MotionTest, NothingMovesWhileNothingChanges) {
  row("org.Alpha")->setLevel(0.5F);
  ASSERT_TRUE(rest());
  row("org.Alpha")->setLevel(0.5F);
  model_->setGain(100, row("org.Alpha"));
  begin();
  EXPECT_FALSE(frames_.isRunning());
}

TEST_F(MotionTest, NothingMovesForWhoWantsNone) {
  appearance_.set({.colorScheme = Appearance::ColorScheme::light, .prefersReducedMotion = true});
  row("org.Alpha")->setLevel(0.5F);
  model_->setGain(180, row("org.Alpha"));
  model_->setMaster(0.1);
  EXPECT_EQ(shown(), 0.5);
  EXPECT_EQ(slider("Alpha")->property("shownPosition"), 0.9);
  begin();
  EXPECT_FALSE(frames_.isRunning());
}

TEST_F(MotionTest, AResetGlidesButAHandDoesNot) {
  QTest::mouseClick(view_.get(), Qt::LeftButton, {}, handlePlace(slider("Alpha"), 200));
  EXPECT_EQ(slider("Alpha")->property("shownPosition"), 1.0);
  ASSERT_TRUE(rest());
  model_->resetAllVolumes();
  EXPECT_EQ(slider("Alpha")->property("value"), 100);
  begin();
  frames_.pass(16);
  frames_.pass(16);
  EXPECT_GT(slider("Alpha")->property("shownPosition").toDouble(), 0.5);
  EXPECT_LT(slider("Alpha")->property("shownPosition").toDouble(), 1.0);
  ASSERT_TRUE(rest());
  EXPECT_EQ(slider("Alpha")->property("shownPosition"), 0.5);
}

TEST_F(MotionTest, TheWaitSpinsUntilItIsOver) {
  consent_.setPreflight(2);
  pass(kMonitorInterval);
  ASSERT_TRUE(rest());
  model_->requestPermission();
  ASSERT_TRUE(pumpUntil([this] { return model_->isRequestingPermission(); }));
  EXPECT_FALSE(rest());
  consent_.answer(false);
  ASSERT_TRUE(pumpUntil([this] { return !model_->isRequestingPermission(); }));
  EXPECT_TRUE(rest());
}

} // namespace
} // namespace sonvel
