#include "desktop/desktop_identity.h"

#include <gmock/gmock.h>

#include <map>
#include <ostream>

namespace sonvel::desktop {
namespace {

constexpr std::int32_t kPID = 100;
constexpr auto kOwnID = "com.quellmarsh.sonvel";
constexpr auto kUserManager = "/user.slice/user-1000.slice/user@1000.service/";

class MadeUpProcesses final : public ProcessTree {
 public:
  explicit MadeUpProcesses(std::map<std::int32_t, ProcessFacts> processes)
      : processes_(std::move(processes)) {}

  std::optional<ProcessFacts> process(std::int32_t pid) const override {
    const auto found = processes_.find(pid);
    return found == processes_.end() ? std::nullopt : std::optional(found->second);
  }

 private:
  std::map<std::int32_t, ProcessFacts> processes_;
};

class MadeUpEntries final : public DesktopEntries {
 public:
  explicit MadeUpEntries(std::vector<DesktopEntry> entries)
      : table_(std::make_shared<DesktopEntryTable>(std::move(entries))) {}

  std::shared_ptr<const DesktopEntryTable> current() const override { return table_; }

 private:
  std::shared_ptr<const DesktopEntryTable> table_;
};

DesktopEntry entry(std::string id, std::optional<std::string> program,
                   std::vector<std::string> arguments = {}) {
  return {.id = std::move(id), .launch = {.program = std::move(program), .arguments = std::move(arguments)}};
}

DesktopEntry script(std::string id, std::string program) {
  return {.id = std::move(id), .launch = {.program = std::move(program), .isScript = true}};
}

DesktopEntry terminal(std::string id, std::string program) {
  return {.id = std::move(id), .launch = {.program = std::move(program)}, .isTerminalEmulator = true};
}

/// One that started after its parents, whose IDs are smaller in these tables.
ProcessFacts process(std::int32_t parent, const std::string& executable,
                     std::vector<std::string> moreArguments = {}, const std::string& unit = "session.scope") {
  moreArguments.insert(moreArguments.begin(), executable);
  return {.parentID = parent,
          .startTimeTicks = static_cast<std::uint64_t>(parent) + 1,
          .name = executable.substr(executable.rfind('/') + 1).substr(0, 15),
          .executable = executable,
          .arguments = std::move(moreArguments),
          .workingFolder = "/home/me/tools",
          .controlGroup = kUserManager + unit};
}

/// What is installed in all cases.
std::vector<DesktopEntry> installed() {
  return {
      entry(kOwnID, "/usr/bin/sonvel"),
      entry("player", "/usr/bin/player", {"--from-menu"}),
      entry("org.example.Flat", std::nullopt),
      entry("music", "/usr/bin/music"),
      entry("music-mini", "/usr/bin/music", {"--mini"}),
      script("pytunes", "/usr/bin/pytunes"),
      entry("arcade", "/usr/games/arcade"),
      entry("arcade-game", "/usr/games/arcade", {"arcade://run/7"}),
      entry("only-game", "/usr/games/engine", {"/usr/share/only-game"}),
      entry("browser", "/opt/vendor/browser/browser-launcher"),
      script("fox", "/usr/bin/fox"),
      entry("office-writer", "/usr/lib/office/program/office", {"--writer"}),
      entry("office-start", "/usr/lib/office/program/office"),
      entry("one-of-two", "/opt/suite/one"),
      entry("other-of-two", "/opt/suite/two"),
      entry("webview", "/usr/bin/webview"),
      entry("library-demo", "/usr/lib/x86_64-linux-gnu/demo"),
      entry("toolkit-demo", "/usr/lib/engine/bin/demo"),
      script("wrapped", "/usr/bin/wrapped"),
      terminal("terminal", "/usr/bin/terminal"),
      entry("editor", "/usr/share/editor/bin/editor"),
  };
}

AudioClient claiming(std::optional<std::string> applicationID,
                     std::optional<std::string> processBinary = {}) {
  AudioClient client;
  client.applicationID = std::move(applicationID);
  client.processBinary = std::move(processBinary);
  return client;
}

AudioClient sandboxed(std::string sandboxAppID, AudioClient client) {
  client.sandboxAppID = std::move(sandboxAppID);
  return client;
}

struct Case {
  const char* what;
  std::optional<std::string> expected;
  std::map<std::int32_t, ProcessFacts> processes;
  AudioClient client{};
};

void PrintTo(const Case& tested, std::ostream* out) {
  *out << tested.what;
}

class DesktopIdentityTest : public testing::TestWithParam<Case> {};

TEST_P(DesktopIdentityTest, Names) {
  const MadeUpProcesses processes(GetParam().processes);
  const MadeUpEntries entries(installed());
  auto client = GetParam().client;
  client.processID = kPID;
  const DesktopIdentity identity(processes, entries, {kOwnID, "/usr/bin/sonvel"});
  EXPECT_EQ(identity.bundleIdentifier(client), GetParam().expected);
}

std::string caseName(const testing::TestParamInfo<Case>& info) {
  return info.param.what;
}

const AudioClient kClaims = claiming("claimed.id", "claimed-binary");

INSTANTIATE_TEST_SUITE_P(
    Chain, DesktopIdentityTest,
    testing::Values(
        Case{"SandboxBeatsUnit",
             "org.example.Vouched",
             {{kPID, process(1, "/usr/bin/player", {}, "app-gnome-music-1.scope")}},
             sandboxed("org.example.Vouched", claiming("claimed.id"))},
        Case{"UnitBeatsProgram",
             "music",
             {{kPID, process(1, "/usr/bin/player", {}, "app-gnome-music-1.scope")}}},
        Case{"ProgramBeatsClaims",
             "player",
             {{kPID, process(1, "/usr/bin/player")}},
             claiming("claimed.id", "player")},
        Case{"ApplicationIDBeatsBinary", "claimed.id", {}, kClaims},
        Case{"ApplicationIDWithoutSuffix", "org.example.App", {}, claiming("org.example.App.desktop")},
        Case{"BinaryComesLast", "claimed-binary", {}, claiming({}, "claimed-binary")},
        Case{"OwnEntryIsOnlyThatOfTheOwnFile",
             kOwnID,
             {{kPID, process(1, "/usr/bin/sonvel", {}, "app-com.quellmarsh.sonvel-1.scope")}}},
        Case{"OwnIDThatIsClaimedIsNotBelieved",
             "claimed-binary",
             {{kPID, process(1, "/usr/bin/claimed-binary", {}, "app-com.quellmarsh.sonvel-1.scope")}},
             claiming(kOwnID, "claimed-binary")},
        Case{"OwnIDThatIsAllThatIsClaimedLeavesTheFile",
             "liar",
             {{kPID, process(1, "/usr/bin/liar")}},
             claiming("com.quellmarsh.sonvel.desktop")},
        Case{"EmptyClaimsAreNone", std::nullopt, {}, sandboxed("", claiming("", ""))},
        Case{"NothingTells", std::nullopt, {{kPID, process(1, "/usr/bin/unheard-of")}}}),
    caseName);

INSTANTIATE_TEST_SUITE_P(
    Unit, DesktopIdentityTest,
    testing::Values(Case{"OfFlatpak",
                         "org.example.Flat",
                         {{kPID, process(1, "/app/bin/flat", {}, "app-flatpak-org.example.Flat-7.scope")}}},
                    Case{"AboveTheLeaf",
                         "music",
                         {{kPID,
                           process(1, "/usr/bin/unheard-of", {}, "app.slice/app-music-1.scope/sub.scope")}}},
                    Case{"WithoutEntry",
                         "player",
                         {{kPID, process(1, "/usr/bin/player", {}, "app-gnome-not.installed-1.scope")}}},
                    Case{"OfTerminalIsNotThePlayers",
                         "player",
                         {{kPID, process(1, "/usr/bin/player", {}, "app-terminal-1.scope")}}},
                    Case{"OfTerminalIsNotAnUnknowns",
                         std::nullopt,
                         {{kPID, process(90, "/usr/bin/unheard-of", {}, "app-terminal-1.scope")},
                          {90, process(80, "/usr/bin/bash", {}, "app-terminal-1.scope")},
                          {80, process(1, "/usr/bin/terminal", {}, "app-terminal-1.scope")}}},
                    Case{"OfTerminalIsItsOwn",
                         "terminal",
                         {{kPID, process(1, "/usr/bin/terminal", {}, "app-terminal-1.scope")}}},
                    Case{"OfEditorIsNotThatOfWhatIsTypedInIt",
                         std::nullopt,
                         {{kPID, process(90, "/usr/bin/unheard-of", {}, "app-editor-1.scope")},
                          {90, process(80, "/usr/bin/zsh", {"-i"}, "app-editor-1.scope")},
                          {80, process(1, "/usr/share/editor/editor", {}, "app-editor-1.scope")}}},
                    Case{"OfEditorIsThatOfItsCommands",
                         "editor",
                         {{kPID, process(90, "/usr/bin/unheard-of", {}, "app-editor-1.scope")},
                          {90, process(80, "/usr/bin/sh", {"-c", "unheard-of x"}, "app-editor-1.scope")},
                          {80, process(1, "/usr/share/editor/editor", {}, "app-editor-1.scope")}}}),
    caseName);

INSTANTIATE_TEST_SUITE_P(
    Program, DesktopIdentityTest,
    testing::Values(
        Case{"WithAnOptionOfItsEntry", "music-mini", {{kPID, process(1, "/usr/bin/music", {"--mini"})}}},
        Case{"WithoutOptions", "music", {{kPID, process(1, "/usr/bin/music", {"a.ogg"})}}},
        Case{"StartedOnAName", "arcade-game", {{kPID, process(1, "/usr/games/arcade", {"arcade://run/7"})}}},
        Case{"StartedOnAnotherName", "arcade", {{kPID, process(1, "/usr/games/arcade", {"arcade://run/8"})}}},
        Case{"WhoseEntriesAreOnlyForNames",
             std::nullopt,
             {{kPID, process(1, "/usr/games/engine", {"/usr/share/other-game"})}}},
        Case{"InTheFolderOfAnEntry",
             "browser",
             {{kPID, process(1, "/opt/vendor/browser/browser", {"--type=utility"})}}},
        Case{"BelowTheFolderOfAnEntry", "editor", {{kPID, process(1, "/usr/share/editor/editor")}}},
        Case{"InTheFolderOfTwoPrograms", std::nullopt, {{kPID, process(1, "/opt/suite/helper")}}},
        Case{"InAFolderOfManyPrograms", std::nullopt, {{kPID, process(1, "/usr/bin/music-helper")}}},
        Case{"InTheLibrariesFolderOfAnEntry",
             std::nullopt,
             {{kPID, process(1, "/usr/lib/x86_64-linux-gnu/other/player")}}},
        Case{"BehindAWrapperOfItsName", "fox", {{kPID, process(1, "/usr/lib/fox-115/fox-bin")}}},
        Case{"BehindAWrapperOfItsFolder", "fox", {{kPID, process(1, "/usr/lib/fox/plugin-container")}}},
        Case{"OfTheSuiteByItsOption",
             "office-writer",
             {{kPID, process(1, "/usr/lib/office/program/office.bin", {"--writer"})}}},
        Case{"OfTheSuite", "office-start", {{kPID, process(1, "/usr/lib/office/program/office.bin")}}}),
    caseName);

INSTANTIATE_TEST_SUITE_P(
    Interpreter, DesktopIdentityTest,
    testing::Values(Case{"RunsTheScriptOfAnEntry",
                         "pytunes",
                         {{kPID, process(1, "/usr/bin/python3.11", {"-u", "/usr/bin/pytunes", "a.ogg"})}}},
                    Case{"RunsAScriptByRelativePath",
                         "pytunes",
                         {{kPID, process(1, "/usr/bin/python3.11", {"../../../usr/bin/pytunes"})}}},
                    Case{"RunsAnotherScript",
                         std::nullopt,
                         {{kPID,
                           process(1, "/usr/bin/python3.11", {"/home/me/beep.py", "/usr/bin/pytunes"})}}},
                    Case{"RunsCode",
                         std::nullopt,
                         {{kPID, process(1, "/usr/bin/python3.11", {"-c", "/usr/bin/pytunes"})}}},
                    Case{"RunsCodeForTheScriptThatStartedIt",
                         "pytunes",
                         {{kPID, process(90, "/usr/bin/python3.11", {"-c", "worker()"})},
                          {90, process(1, "/usr/bin/python3.11", {"/usr/bin/pytunes"})}}},
                    Case{"RunsAModuleForTheScriptThatStartedIt",
                         "pytunes",
                         {{kPID, process(90, "/usr/bin/python3.11", {"-m", "worker"})},
                          {90, process(1, "/usr/bin/python3.11", {"/usr/bin/pytunes"})}}},
                    Case{"RunsAnotherScriptThanItsParent",
                         std::nullopt,
                         {{kPID, process(90, "/usr/bin/python3.11", {"/home/me/beep.py"})},
                          {90, process(1, "/usr/bin/python3.11", {"/usr/bin/pytunes"})}}}),
    caseName);

INSTANTIATE_TEST_SUITE_P(
    Parents, DesktopIdentityTest,
    testing::Values(
        Case{"OfASharedHelper",
             "webview",
             {{kPID, process(90, "/usr/lib/x86_64-linux-gnu/webkit2gtk-4.1/WebKitWebProcess")},
              {90, process(80, "/usr/bin/bwrap")},
              {80, process(1, "/usr/bin/webview")}}},
        Case{"OfASharedHelperAndNotItsNeighbours",
             "webview",
             {{kPID, process(90, "/usr/lib/engine/libexec/QtWebEngineProcess")},
              {90, process(1, "/usr/bin/webview")}}},
        Case{"InTheSameFolder",
             "one-of-two",
             {{kPID, process(90, "/opt/suite/lib/helper")}, {90, process(1, "/opt/suite/one")}}},
        Case{"IncludeTheScriptThatWaits",
             "wrapped",
             {{kPID, process(90, "/usr/local/bin/inner")},
              {90, process(1, "/usr/bin/dash", {"/usr/bin/wrapped"})}}},
        Case{"ThatOnlyStartedItAreOthers",
             std::nullopt,
             {{kPID, process(90, "/usr/bin/unheard-of")}, {90, process(1, "/usr/bin/music")}}},
        Case{"ThatAreTerminalsAreOthers",
             std::nullopt,
             {{kPID, process(90, "/usr/bin/unheard-of")},
              {90, process(80, "/usr/bin/bash")},
              {80, process(1, "/usr/bin/terminal")}}},
        Case{"InACircle",
             std::nullopt,
             {{kPID, process(90, "/opt/x/a")},
              {90, {.parentID = kPID, .startTimeTicks = 91, .executable = "/opt/x/a", .arguments = {"a"}}}}},
        Case{
            "YoungerThanTheChild",
            std::nullopt,
            {{kPID, process(90, "/usr/bin/bwrap")},
             {90,
              {.parentID = 1, .startTimeTicks = 5000, .executable = "/usr/bin/music", .arguments = {"m"}}}}}),
    caseName);

INSTANTIATE_TEST_SUITE_P(
    ClaimedProcess, DesktopIdentityTest,
    testing::Values(
        Case{"IsAnotherProgram",
             "tune",
             {{kPID, process(1, "/usr/bin/music", {}, "app-music-1.scope")}},
             claiming({}, "tune")},
        Case{
            "IsKnownByItsExecutable", "music", {{kPID, process(1, "/usr/bin/music")}}, claiming({}, "Music")},
        Case{"IsKnownByItsScript",
             "pytunes",
             {{kPID, process(1, "/usr/bin/python3.11", {"/usr/bin/pytunes"})}},
             claiming({}, "pytunes")},
        Case{"IsKnownByItsShortName",
             "music",
             {{kPID, {.name = "music-with-a-lo", .executable = "/usr/bin/music", .arguments = {"m"}}}},
             claiming({}, "music-with-a-long-name")},
        Case{"ShowsNothing", "claimed.id", {{kPID, {.parentID = 1}}}, kClaims}),
    caseName);

} // namespace
} // namespace sonvel::desktop
