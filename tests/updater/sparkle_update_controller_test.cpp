#include "simulated/desktop.h"
#include "updater/sparkle_update_controller.h"

#include <gtest/gtest.h>

#include <vector>

namespace sonvel {
namespace {

using simulated::SimulatedBundle;

class CountingUpdater final : public StandardUpdater {
 public:
  explicit CountingUpdater(int& checks)
      : checks_(checks) {}

  void checkForUpdates() override { ++checks_; }

 private:
  int& checks_;
};

struct RecordingProvider final : UpdaterProvider {
  std::unique_ptr<StandardUpdater> startUpdater(const UpdateSource& source,
                                                std::weak_ptr<const UpdaterDelegate> asked) override {
    started.push_back(source);
    delegate = std::move(asked);
    return std::make_unique<CountingUpdater>(checks);
  }

  std::vector<UpdateSource> started;
  std::weak_ptr<const UpdaterDelegate> delegate;
  int checks = 0;
};

const std::string kKey = "AAECAwQFBgcICQoLDA0ODxAREhMUFRYXGBkaGxwdHh8=";

SimulatedBundle bundleOn(const std::string& channel) {
  return SimulatedBundle("com.example", {{"SUFeedURL", "https://updates.example/appcast.xml"},
                                         {"SUPublicEDKey", kKey},
                                         {"AppUpdateChannel", channel}});
}

TEST(SparkleUpdateController, isOffWithoutAValidConfiguration) {
  RecordingProvider provider;
  for (const SimulatedBundle& bundle : {SimulatedBundle("com.example"), bundleOn("nightly")}) {
    SparkleUpdateController controller(bundle, provider);
    EXPECT_FALSE(controller.isAvailable());
    controller.checkForUpdates();
  }
  EXPECT_TRUE(provider.started.empty());
  EXPECT_EQ(provider.checks, 0);
}

TEST(SparkleUpdateController, startsAnUpdaterWithFeedKeyAndChannels) {
  const std::pair<std::string, std::set<std::string>> channels[] = {{"stable", {}}, {"beta", {"beta"}}};
  for (const auto& [channel, allowed] : channels) {
    RecordingProvider provider;
    {
      SparkleUpdateController controller(bundleOn(channel), provider);
      EXPECT_TRUE(controller.isAvailable());
      EXPECT_EQ(provider.started, std::vector<UpdateSource>({{"https://updates.example/appcast.xml", kKey}}));
      EXPECT_EQ(provider.checks, 0);
      controller.checkForUpdates();
      EXPECT_EQ(provider.checks, 1);

      const auto delegate = provider.delegate.lock();
      ASSERT_NE(delegate, nullptr) << "the controller must keep its delegate alive";
      EXPECT_EQ(delegate->allowedChannels(CountingUpdater(provider.checks)), allowed);
    }
    EXPECT_TRUE(provider.delegate.expired());
  }
}

} // namespace
} // namespace sonvel
