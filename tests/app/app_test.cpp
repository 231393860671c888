#include "app/app_delegate.h"
#include "app/server_notice.h"
#include "model/model_test.h"
#include "simulated/simulated_server.h"

#include <thread>

namespace sonvel {
namespace {

struct CountingApplication final : TerminatingApplication {
  void replyToApplicationShouldTerminate(bool mayTerminate) override { replies.push_back(mayTerminate); }

  std::vector<bool> replies;
};

class AppTest : public MixerTest {};

TEST_F(AppTest, EndsOnceAndOnlyWhenEveryTapIsGone) {
  model_.reset();
  CountingApplication application;
  const auto delegate = std::make_shared<AppDelegate>(
      MixerDependencies{actor_, mainThread_, clock_, permission_, preferences_, updates_});
  play("One", "com.example.one");
  play("Two", "com.example.two");
  delegate->model().onAppear();
  ASSERT_TRUE(settle());
  ASSERT_EQ(controlled().size(), 2U);

  HeldCall held(audio_, {.call = simulated::Call::destroyProcessTap, .after = 1}); // the second removal fails
  EXPECT_EQ(delegate->applicationShouldTerminate(application), TerminateReply::later);
  ASSERT_TRUE(pumpUntil([&] { return held.isHeld(); }));
  EXPECT_EQ(delegate->applicationShouldTerminate(application), TerminateReply::later) << "a second request";
  pump();
  EXPECT_TRUE(application.replies.empty());
  held.release();
  ASSERT_TRUE(settle());
  EXPECT_EQ(application.replies, std::vector{true});
  EXPECT_TRUE(controlled().empty());
}

TEST_F(AppTest, NoticesOnTheMainThreadWhatTheServerDoes) {
  using enum AudioServer::Connection;
  simulated::SimulatedServer server;
  std::vector<QString> heard;
  bool isPulseAudioServing = false;
  bool hasChanged = false; // while the notice is made
  const auto looksForPulseAudio = [&] {
    if (!std::exchange(hasChanged, true)) server.setRights(AudioServer::Rights::granted);
    return isPulseAudioServing;
  };
  std::optional<ServerNotice> notice(std::in_place, server, mainThread_, looksForPulseAudio,
                                     [&](const QString& text) { heard.push_back(text); });
  EXPECT_TRUE(notice->hasServerAnswered());
  heard.clear();
  const auto become = [&](AudioServer::Connection connection) {
    std::thread([&] { server.setConnection(connection); }).join(); // a thread of the audio system
  };
  EXPECT_EQ(notice->text(), "Waiting for the sound service to start.");
  become(connected);
  become(lost);
  EXPECT_TRUE(heard.empty());
  pump();
  ASSERT_EQ(heard.size(), 1U);
  EXPECT_EQ(heard[0], "The sound service has stopped. Sonvel goes on by itself when it is back.");
  server.setRights(AudioServer::Rights::restricted);
  pump();
  EXPECT_EQ(notice->text(), "") << "the permission card says it";
  server.setRights(AudioServer::Rights::granted); // posted but not delivered yet
  pump();
  isPulseAudioServing = true;
  notice->update();
  EXPECT_TRUE(heard.back().contains("pipewire-audio"));
  const auto told = heard.size();
  notice.reset();
  become(connected); // delivered after the notice's end
  pump();
  EXPECT_EQ(heard.size(), told);
}

} // namespace
} // namespace sonvel
