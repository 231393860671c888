#include "desktop/desktop_applications.h"

#include <gmock/gmock.h>

namespace sonvel::desktop {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;

AudioClient client(std::int32_t pid, std::optional<std::string> id = {},
                   std::optional<std::string> name = {}) {
  AudioClient client;
  client.processID = pid;
  client.applicationID = std::move(id);
  client.applicationName = std::move(name);
  return client;
}

class MadeUpClients final : public AudioClients {
 public:
  std::vector<AudioClient> audioClients() const override { return clients; }

  std::vector<AudioClient> clients;
};

/// Takes the claimed ID for the truth, and counts how often it is asked.
class ClaimedIdentity final : public ApplicationIdentity {
 public:
  std::optional<std::string> bundleIdentifier(const AudioClient& client) const override {
    ++questions;
    return client.applicationID;
  }

  mutable int questions = 0;
};

class MadeUpEntries final : public DesktopEntries {
 public:
  std::shared_ptr<const DesktopEntryTable> current() const override { return table; }

  std::shared_ptr<const DesktopEntryTable> table = std::make_shared<DesktopEntryTable>(
      std::vector<DesktopEntry>{{.id = "player", .name = "Abspieler"}, {.id = "nameless"}});
};

class StandingClock final : public Clock {
 public:
  TimePoint now() const override { return time; }

  std::unique_ptr<Timer> callAfter(Duration, std::function<void()>) override { return nullptr; }

  TimePoint time{};
};

class DesktopApplicationsTest : public testing::Test {
 protected:
  MadeUpClients clients_;
  ClaimedIdentity identity_;
  MadeUpEntries entries_;
  StandingClock clock_;
  DesktopApplications applications_{clients_, identity_, entries_, clock_};
};

TEST_F(DesktopApplicationsTest, AreClientsWithAnEntryOrAName) {
  clients_.clients = {
      client(10, "player", "player 1.0"),
      client(11, "not.installed", "Beeper"),
      client(12, {}, "Only a name"),
      client(13, "not.installed"),
      client(14, "nameless"),
      client(15, {}, ""),
  };
  const auto with = [&](std::int32_t pid) {
    return applications_.runningApplicationWithProcessIdentifier(pid);
  };
  EXPECT_EQ(with(10), (RunningApplication{10, "player", "Abspieler"}));
  EXPECT_EQ(with(11), (RunningApplication{11, "not.installed", "Beeper"}));
  EXPECT_EQ(with(12), (RunningApplication{12, std::nullopt, "Only a name"}));
  EXPECT_EQ(with(14), (RunningApplication{14, "nameless", std::nullopt}));
  for (const std::int32_t pid : {13, 15, 16, 0, -1})
    EXPECT_EQ(with(pid), std::nullopt) << pid;
}

TEST_F(DesktopApplicationsTest, AreFoundByIdentifierAndKnownByTheBestOfTheirConnections) {
  clients_.clients = {client(10, {}, "control"), client(10, "player"), client(10, "other", "late"),
                      client(0, "player"), client(0, "player")};
  const RunningApplication player{10, "player", "Abspieler"};
  const RunningApplication unknown{0, "player", "Abspieler"};
  EXPECT_THAT(applications_.runningApplicationsWithBundleIdentifier("player"),
              ElementsAre(player, unknown, unknown));
  EXPECT_EQ(applications_.runningApplicationWithProcessIdentifier(10), player);
  EXPECT_EQ(applications_.runningApplicationWithProcessIdentifier(0), std::nullopt);
}

TEST_F(DesktopApplicationsTest, AreLookedAtOnceInARound) {
  clients_.clients = {client(10, "player"), client(11)};
  for (int i = 0; i < 5; ++i) {
    (void)applications_.runningApplicationWithProcessIdentifier(10);
    (void)applications_.runningApplicationsWithBundleIdentifier("player");
  }
  EXPECT_EQ(identity_.questions, 2);

  clients_.clients.pop_back();
  EXPECT_TRUE(applications_.runningApplicationWithProcessIdentifier(10));
  EXPECT_EQ(identity_.questions, 3);

  clock_.time += 1200ms;
  EXPECT_TRUE(applications_.runningApplicationWithProcessIdentifier(10));
  EXPECT_EQ(identity_.questions, 4);
}

} // namespace
} // namespace sonvel::desktop
