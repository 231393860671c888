// Finds the application of a client of the sound server.

#include "desktop/desktop_identity.h"
#include "desktop/remembered_identity.h"
#include "desktop/systemd_unit.h"
#include "simulated/manual_clock.h"

#include <gtest/gtest.h>

#include <map>
#include <sstream>

namespace sonvel::desktop {
namespace {

using Words = std::vector<std::string>;

constexpr std::int32_t kPID = 100;
constexpr auto kOwnID = "com.quellmarsh.sonvel";

class MadeUpProcesses final : public ProcessTree {
 public:
  std::optional<ProcessFacts> process(std::int32_t pid) const override {
    const auto found = processes.find(pid);
    return found == processes.end() ? std::nullopt : std::optional(found->second);
  }

  std::map<std::int32_t, ProcessFacts> processes;
};

DesktopEntry entry(std::string id, std::string program, Words arguments = {}) {
  return {.id = std::move(id), .launch = {.program = std::move(program), .arguments = std::move(arguments)}};
}

DesktopEntry script(std::string id, std::string program) {
  return {.id = std::move(id), .launch = {.program = std::move(program), .isScript = true}};
}

const std::vector<DesktopEntry> kInstalled{
    entry(kOwnID, "/usr/bin/sonvel"),
    entry("player", "/usr/bin/player"),
    entry("music", "/usr/bin/music"),
    entry("music-mini", "/usr/bin/music", {"--mini"}),
    script("pytunes", "/usr/bin/pytunes"),
    script("fox", "/usr/bin/fox"),
    entry("one-of-two", "/opt/suite/one"),
    entry("other-of-two", "/opt/suite/two"),
    entry("webview", "/usr/bin/webview"),
    entry("library-demo", "/usr/lib/x86_64-linux-gnu/demo"),
    script("wrapped", "/usr/bin/wrapped"),
    {.id = "terminal", .launch = {.program = "/usr/bin/terminal"}, .isTerminalEmulator = true},
    entry("editor", "/usr/share/editor/bin/editor"),
};

class MadeUpEntries final : public DesktopEntries {
 public:
  std::shared_ptr<const DesktopEntryTable> current() const override { return table_; }

 private:
  std::shared_ptr<const DesktopEntryTable> table_ = std::make_shared<DesktopEntryTable>(kInstalled);
};

AudioClient claiming(std::optional<std::string> applicationID, std::optional<std::string> binary = {},
                     std::optional<std::string> sandboxAppID = {}) {
  AudioClient client;
  client.processID = kPID;
  client.applicationID = std::move(applicationID);
  client.processBinary = std::move(binary);
  client.sandboxAppID = std::move(sandboxAppID);
  return client;
}

struct Case {
  std::optional<std::string> expected;
  Words commands; ///< of the process, its parent and so on
  std::string unit = "session.scope";
  AudioClient client = claiming({});
};

/// Parents are older than their children and have smaller IDs.
std::map<std::int32_t, ProcessFacts> running(const Words& commands, const std::string& unit) {
  std::map<std::int32_t, ProcessFacts> processes;
  std::int32_t pid = kPID;
  for (const auto& command : commands) {
    std::istringstream text(command);
    ProcessFacts facts{.parentID = --pid,
                       .startTimeTicks = static_cast<std::uint64_t>(pid) + 1,
                       .arguments = {std::istream_iterator<std::string>(text), {}},
                       .workingFolder = "/home/me/tools",
                       .controlGroup = "/user.slice/user-1000.slice/user@1000.service/" + unit};
    if (!facts.arguments.empty()) facts.executable = facts.arguments.front();
    processes.emplace(pid + 1, std::move(facts));
  }
  return processes;
}

class DesktopIdentityTest : public testing::Test {
 protected:
  MadeUpProcesses processes_;
  MadeUpEntries entries_;
  DesktopIdentity identity_{processes_, entries_, {kOwnID, "/usr/bin/sonvel"}};
};

const std::string kEditor = "/usr/share/editor/editor";
const std::string kEdited = "app-editor-1.scope";
const std::string kUnit = "app-gnome-music-1.scope";
const std::string kTunes = "/usr/bin/python3.11 /usr/bin/pytunes";

const Case kCases[]{
    // Priority: sandbox, unit, program, the client's claim.
    {"org.example.Box", {"/usr/bin/player"}, kUnit, claiming("claimed", {}, "org.example.Box")},
    {"music", {"/usr/bin/player"}, kUnit},
    {"player", {"/usr/bin/player"}, {}, claiming("claimed", "player")},
    {"claimed", {}, {}, claiming("claimed.desktop", "binary")},
    {"binary", {}, {}, claiming({}, "binary")},
    {std::nullopt, {}, {}, claiming("", "", "")},
    // A process that plays for another program gives no name.
    {"tune", {"/usr/bin/music"}, kUnit, claiming({}, "tune")},
    {"music", {"/usr/bin/music"}, {}, claiming({}, "Music")},
    {"pytunes", {kTunes}, {}, claiming({}, "pytunes")},
    // No other program is this program.
    {kOwnID, {"/usr/bin/sonvel"}},
    {"liar", {"/usr/bin/liar"}, "app-com.quellmarsh.sonvel-1.scope", claiming(kOwnID, "liar")},
    {"liar", {"/usr/bin/liar"}, {}, claiming("com.quellmarsh.sonvel.desktop")},
    // Programs started in a terminal have the terminal's unit.
    {"music", {"/usr/bin/unknown"}, "app.slice/app-music-1.scope/sub.scope"},
    {"player", {"/usr/bin/player"}, "app-terminal-1.scope"},
    {std::nullopt, {"/usr/bin/unknown", "/usr/bin/bash", "/usr/bin/terminal"}, "app-terminal-1.scope"},
    {"terminal", {"/usr/bin/terminal"}, "app-terminal-1.scope"},
    {std::nullopt, {"/usr/bin/unknown", "/usr/bin/zsh -i", kEditor}, kEdited},
    {"editor", {"/usr/bin/unknown", "/usr/bin/sh -c unknown", kEditor}, kEdited},
    // The entry that starts a program most exactly, or the only program in its folder.
    {"music-mini", {"/usr/bin/music --mini"}},
    {"music", {"/usr/bin/music a.ogg"}},
    {std::nullopt, {"/opt/suite/helper"}},
    {std::nullopt, {"/usr/bin/music-helper"}},
    {std::nullopt, {"/usr/lib/x86_64-linux-gnu/other/player"}},
    {"fox", {"/usr/lib/fox-115/fox-bin"}},
    // An interpreter stands for its script.
    {"pytunes", {"/usr/bin/python3.11 -u ../../../usr/bin/pytunes a.ogg"}},
    {std::nullopt, {"/usr/bin/python3.11 /home/me/beep.py /usr/bin/pytunes"}},
    {std::nullopt, {"/usr/bin/python3.11 -c /usr/bin/pytunes"}},
    {"pytunes", {"/usr/bin/python3.11 -m worker", kTunes}},
    {std::nullopt, {"/usr/bin/python3.11 /home/me/beep.py", kTunes}},
    // A parent names only its own helpers.
    {"webview", {"/usr/lib/webkit2gtk-4.1/WebKitWebProcess", "/usr/bin/bwrap", "/usr/bin/webview"}},
    {"one-of-two", {"/opt/suite/lib/helper", "/opt/suite/one"}},
    {std::nullopt, {"/opt/suite-extra/helper", "/opt/suite/one"}},
    {"wrapped", {"/usr/local/bin/inner", "/usr/bin/dash /usr/bin/wrapped"}},
};

TEST_F(DesktopIdentityTest, NamesTheApplication) {
  for (const auto& tested : kCases) {
    processes_.processes = running(tested.commands, tested.unit);
    EXPECT_EQ(identity_.bundleIdentifier(tested.client), tested.expected)
        << testing::PrintToString(tested.commands) << ' ' << tested.unit;
  }
}

TEST_F(DesktopIdentityTest, TakesNoYoungerProcessForAParent) {
  processes_.processes = running({"/usr/bin/bwrap", "/usr/bin/music"}, {});
  EXPECT_EQ(identity_.bundleIdentifier(claiming({})), "music");
  processes_.processes.at(kPID - 1).startTimeTicks = 5000; // the ID now belongs to another process
  EXPECT_EQ(identity_.bundleIdentifier(claiming({})), std::nullopt);
}

TEST_F(DesktopIdentityTest, IsReadAgainSeldomOnceAProgramHasStarted) {
  using namespace std::chrono_literals;
  simulated::ManualClock clock;
  const RememberedIdentity remembered(identity_, clock);
  const auto nameAfter = [&](Clock::Duration time, const AudioClient& client = claiming({})) {
    clock.advance(time);
    return remembered.bundleIdentifier(client);
  };
  const auto run = [&](const char* command) { processes_.processes = running({command}, {}); };
  run("/usr/bin/bash");
  EXPECT_EQ(nameAfter(0s), std::nullopt);
  run("/usr/bin/music");
  EXPECT_EQ(nameAfter(499ms), std::nullopt);
  EXPECT_EQ(nameAfter(1ms), "music") << "it was still being started";
  EXPECT_EQ(nameAfter(10s), "music");
  run("/usr/bin/player");
  EXPECT_EQ(nameAfter(14s), "music");
  EXPECT_EQ(nameAfter(0s, claiming({}, "player")), "player") << "another client";
  EXPECT_EQ(nameAfter(1s), "player") << "whatever the reason";
  run("/usr/bin/music");
  EXPECT_EQ(nameAfter(31s), "music");
  run("/usr/bin/player");
  EXPECT_EQ(nameAfter(1s), "player") << "not asked for so long, it counts as new";
}

TEST(SystemdUnit, NamesItsApplication) {
  const std::pair<const char*, Words> cases[] = {
      {"app-gnome-org.example.Player-4711.scope", {"org.example.Player", "gnome-org.example.Player"}},
      {R"(app-web\x2dplayer@5f0e8b.service)", {"web-player"}},
      {"dbus-:1.2-org.example.Player@0.service", {"org.example.Player"}},
      {"snap.web-player.main.5cbc2e34-1b5c-4b5a-9d7c-0f2a8d3a6b11.scope", {"web-player_main"}},
      {R"(app-a\xzz-1.scope)", {R"(a\xzz)"}},
      {"app-.service", {}},
      {"snap.player.scope", {}}};
  for (const auto& [unit, ids] : cases)
    EXPECT_EQ(applicationIDsOfUnit(unit), ids) << unit;
}

} // namespace
} // namespace sonvel::desktop
