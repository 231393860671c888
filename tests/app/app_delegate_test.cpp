#include "app/app_delegate.h"
#include "model/model_test.h"

namespace sonvel {
namespace {

class CountingApplication final : public TerminatingApplication {
 public:
  void replyToApplicationShouldTerminate(bool mayTerminate) override { replies.push_back(mayTerminate); }

  std::vector<bool> replies;
};

class AppDelegateTest : public MixerTest {
 protected:
  AppDelegateTest() { model_.reset(); }

  CountingApplication application_;
  std::shared_ptr<AppDelegate> delegate_ = std::make_shared<AppDelegate>(
      MixerDependencies{actor_, mainThread_, clock_, permission_, preferences_, updates_});
};

TEST_F(AppDelegateTest, LetsAnApplicationEndAtOnceThatNeverOpenedItsPanel) {
  EXPECT_EQ(delegate_->applicationShouldTerminate(application_), TerminateReply::later);
  EXPECT_TRUE(application_.replies.empty());
  ASSERT_TRUE(settle());
  EXPECT_EQ(application_.replies, std::vector{true});
  EXPECT_TRUE(audio_.log().empty());
}

TEST_F(AppDelegateTest, RepliesOnceAndOnlyWhenEveryTapIsGone) {
  play("One", "com.example.one");
  play("Two", "com.example.two");
  delegate_->model().onAppear();
  ASSERT_TRUE(settle());
  ASSERT_EQ(controlled().size(), 2U);

  HeldCall held(audio_, {.call = simulated::Call::destroyProcessTap, .after = 1}); // the last of the two
  EXPECT_EQ(delegate_->applicationShouldTerminate(application_), TerminateReply::later);
  ASSERT_TRUE(pumpUntil([&] { return held.isHeld(); }));
  EXPECT_EQ(delegate_->applicationShouldTerminate(application_), TerminateReply::later) << "a second request";
  pump();
  EXPECT_TRUE(application_.replies.empty());
  held.release();
  ASSERT_TRUE(settle());
  EXPECT_EQ(application_.replies, std::vector{true});
  EXPECT_TRUE(controlled().empty());
  EXPECT_FLOAT_EQ(heard(), 0.5F);
}

TEST_F(AppDelegateTest, EndsAlsoWhenAnUndoFails) {
  play("One", "com.example.one");
  delegate_->model().onAppear();
  ASSERT_TRUE(settle());
  audio_.fail({.call = simulated::Call::destroyProcessTap});
  delegate_->applicationShouldTerminate(application_);
  ASSERT_TRUE(settle());
  EXPECT_EQ(application_.replies, std::vector{true});
}

} // namespace
} // namespace sonvel
