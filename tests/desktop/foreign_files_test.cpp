// Files that others write: icons of entries, facts of processes, this build's information.

#include "desktop/desktop_application_icons.h"
#include "desktop/desktop_entries.h"
#include "desktop/launch_command.h"
#include "desktop/proc_process_information.h"
#include "desktop/process_tree.h"
#include "desktop/program_bundle.h"
#include "desktop/temporary_folder.h"

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <sys/stat.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace sonvel::desktop {
namespace {

namespace fs = std::filesystem;

std::string statusLine(const std::string& name, int parent, long startTime) {
  return "42 (" + name + ") S " + std::to_string(parent) + " 42 42 0 -1 4194304 1 2 3 4 5 6 7 8 20 0 1 0 " +
         std::to_string(startTime) + " 1000 2000\n";
}

TEST(DesktopApplicationIcons, AreNamedAsInTheEntry) {
  const TemporaryFolder folder;
  const InstalledDesktopEntries entries({.applications = {folder.path("applications")}, .programs = {}});
  const DesktopApplicationIcons icons(entries);
  const std::string head = "[Desktop Entry]\nType=Application\nName=Player\nExec=/bin/sh %U\n";
  const std::pair<const char*, std::optional<std::string>> cases[] = {
      {"Icon=org.example.Player\n", "org.example.Player"},
      {"Icon=player.png\n", "player"},
      {"Icon=/opt/the player/icon.svg\nNoDisplay=true\n", "/opt/the player/icon.svg"},
      {"Icon=\n", std::nullopt},
      {"", std::nullopt},
  };
  for (const auto& [line, icon] : cases) {
    const auto path = folder.write("applications/kde/player.desktop", head + line);
    ASSERT_EQ(icons.locationOfApplication("kde-player"), path) << line;
    EXPECT_EQ(icons.iconOfRunningApplication({.processID = 0, .bundleIdentifier = "kde-player"}), icon)
        << line;
  }
  folder.write("applications/gone.desktop", head + "Icon=gone\nHidden=true\n");
  ASSERT_EQ(mkfifo(folder.path("applications/pipe.desktop").c_str(), 0600), 0);
  for (const auto* id : {"gone", "pipe", "never.installed", ""})
    EXPECT_EQ(icons.iconOfRunningApplication({.processID = 7, .bundleIdentifier = id}), std::nullopt) << id;
  EXPECT_EQ(icons.iconForFile(folder.write("notes.txt", "Icon=notes\n")), std::nullopt);
}

TEST(ProcFilesystem, ReadsWhatIsThere) {
  const TemporaryFolder proc;
  const auto program = proc.writeProgram("bin/python3.11");
  proc.write("42/stat", statusLine("a) S 7 (b", 17, 9000));
  proc.write("42/cmdline", std::string("py thon\0--flag\0\0last\0", 21));
  proc.write("42/cgroup", "3:cpu:/x\n1:name=systemd:/old/app-a-1.scope\n0::/new/app-b-1.scope\n");
  fs::create_symlink(program, proc.path("42/exe"));
  fs::create_symlink("/work", proc.path("42/cwd"));
  proc.write("1/stat", statusLine("bare", 0, 1));
  proc.write("2/stat", statusLine("old", 1, 2));
  proc.write("2/cgroup", "1:name=systemd:/old/app-a-1.scope\n0::/\n");
  fs::create_symlink("/opt/app/app (deleted)", proc.path("2/exe"));
  proc.write("3/stat", "3 (cut");
  proc.write("4/cmdline", "no status");

  const ProcFilesystem processes(proc.path());
  EXPECT_EQ(processes.process(42), (ProcessFacts{.parentID = 17,
                                                 .startTimeTicks = 9000,
                                                 .name = "a) S 7 (b",
                                                 .executable = program,
                                                 .arguments = {"py thon", "--flag", "", "last"},
                                                 .workingFolder = "/work",
                                                 .controlGroup = "/new/app-b-1.scope"}));
  EXPECT_EQ(processes.process(1), (ProcessFacts{.startTimeTicks = 1, .name = "bare"}));
  EXPECT_EQ(processes.process(2), (ProcessFacts{.parentID = 1,
                                                .startTimeTicks = 2,
                                                .name = "old",
                                                .executable = "/opt/app/app",
                                                .controlGroup = "/old/app-a-1.scope"}));
  for (const std::int32_t pid : {3, 4, 5, 0, -1})
    EXPECT_EQ(processes.process(pid), std::nullopt) << pid;
}

TEST(ProcFilesystem, KnowsNoExecutableThatIsAnotherFileHere) {
  // A relative link stands for the path of a sandbox: followed from the process it leads to one file, as a
  // path of this program's to another.
  const TemporaryFolder folder;
  folder.write("proc/42/stat", statusLine("boxed", 1, 2));
  folder.writeProgram("proc/bin/player", "inside");
  folder.writeProgram("bin/player", "outside");
  fs::create_directories(folder.path("here"));
  fs::create_symlink("../bin/player", folder.path("proc/42/exe"));
  const auto before = fs::current_path();
  fs::current_path(folder.path("here"));
  const auto boxed = ProcFilesystem(folder.path("proc")).process(42);
  fs::current_path(before);
  ASSERT_TRUE(boxed);
  EXPECT_EQ(boxed->executable, std::nullopt);
}

TEST(ProcFilesystem, SurvivesProcessesThatDieWhileTheyAreRead) {
  const ProcFilesystem processes;
  const ProcProcessInformation information;
  std::array<char, 16> name{};
  EXPECT_EQ(processes.process(getpid())->executable, canonicalPath("/proc/self/exe"));
  EXPECT_EQ(information.procName(getpid(), name), 12);
  EXPECT_STREQ(name.data(), "desktop_test");
  EXPECT_EQ(information.procName(getpid(), std::span(name).first(4)), 3);
  for (int i = 0; i < 1000; ++i) {
    const pid_t child = fork();
    if (child == 0) _exit(0);
    std::atomic<bool> hasEnded = false;
    std::thread reaper([&] {
      waitpid(child, nullptr, 0);
      hasEnded = true;
    });
    while (!hasEnded) {
      (void)information.procName(child, name);
      (void)processes.process(child);
    }
    reaper.join();
    EXPECT_EQ(information.procName(child, name), 0);
    EXPECT_EQ(processes.process(child), std::nullopt);
  }
}

TEST(ProgramBundle, ReadsTextsAndTruthValues) {
  const TemporaryFolder folder;
  using InfoObject = BundleInformation::InfoObject;
  const std::string object = R"({"text": "a", "truth": true, "number": 1, "list": ["a"]})";
  const std::tuple<std::string, const char*, std::optional<InfoObject>> cases[] = {
      {object, "text", "a"},
      {object, "truth", true},
      {object, "number", std::nullopt},
      {object, "list", std::nullopt},
      {object, "absent", std::nullopt},
      {R"(["text"])", "text", std::nullopt},
      {R"({"text": "a")", "text", std::nullopt},
      {R"({"text": "a", "more": ")" + std::string(70'000, 'm') + "\"}", "text", std::nullopt}};
  for (const auto& [content, key, value] : cases)
    EXPECT_EQ(ProgramBundle(folder.write("information.json", content)).objectForInfoKey(key), value) << key;
  EXPECT_EQ(ProgramBundle::informationFileOf("/opt/sonvel/bin/sonvel"),
            "/opt/sonvel/share/sonvel/information.json");
}

} // namespace
} // namespace sonvel::desktop
