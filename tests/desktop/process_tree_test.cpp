#include "desktop/process_tree.h"
#include "desktop/pulse_audio.h"
#include "desktop/temporary_folder.h"

#include <gtest/gtest.h>

#include <fstream>
#include <unistd.h>

namespace sonvel::desktop {
namespace {

namespace fs = std::filesystem;

std::string statusLine(const std::string& name, int parent, int startTime) {
  return "42 (" + name + ") S " + std::to_string(parent) + " 42 42 0 -1 4194304 1 2 3 4 5 6 7 8 20 0 1 0 " +
         std::to_string(startTime) + " 1000 2000\n";
}

TEST(ProcFilesystem, ReadsWhatIsThere) {
  const TemporaryFolder proc;
  const auto program = proc.writeProgram("bin/python3.11");
  proc.write("42/stat", statusLine("a) S 7 (b", 17, 9000));
  proc.write("42/cmdline", std::string("py thon\0--flag\0\0last\0", 21));
  proc.write("42/cgroup", "3:cpu:/x\n1:name=systemd:/old/app-a-1.scope\n0::/new/app-b-1.scope\n");
  fs::create_symlink(program, proc.path("42/exe"));
  fs::create_symlink("/work", proc.path("42/cwd"));
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
  EXPECT_EQ(processes.process(2).value().executable, "/opt/app/app");
  EXPECT_EQ(processes.process(2).value().controlGroup, "/old/app-a-1.scope");
  for (const std::int32_t pid : {3, 4, 5, 0, -1})
    EXPECT_EQ(processes.process(pid), std::nullopt) << pid;
}

TEST(ProcFilesystem, KnowsNoExecutableThatIsAnotherFileHere) {
  // The relative link stands for a sandbox's path: seen from the process and from the test it leads to
  // different files.
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

TEST(PulseAudio, IsKnownByTheNameOfTheProcessThatServes) {
  const TemporaryFolder folder;
  setenv("XDG_RUNTIME_DIR", folder.path().c_str(), 1);
  EXPECT_FALSE(isPulseAudioServing()) << "nobody serves";
  folder.write("pulse/pid", std::to_string(getpid()) + "\n");
  for (const auto* name : {"pipewire-pulse", "pulseaudio"}) {
    std::ofstream("/proc/self/comm") << name;
    EXPECT_EQ(isPulseAudioServing(), name == std::string("pulseaudio"));
  }
  unsetenv("XDG_RUNTIME_DIR");
}

} // namespace
} // namespace sonvel::desktop
