#include "desktop/launch_command.h"
#include "desktop/proc_process_information.h"
#include "desktop/process_tree.h"
#include "desktop/temporary_folder.h"

#include <gmock/gmock.h>

#include <array>
#include <sys/wait.h>
#include <unistd.h>

namespace sonvel::desktop {
namespace {

namespace fs = std::filesystem;

std::string statusLine(const std::string& name, int parent, long startTime) {
  return "42 (" + name + ") S " + std::to_string(parent) + " 42 42 0 -1 4194304 1 2 3 4 5 6 7 8 20 0 1 0 " +
         std::to_string(startTime) + " 1000 2000\n";
}

/// A process that waits until it is ended.
class Child {
 public:
  Child()
      : pid_(fork()) {
    if (pid_ == 0) {
      pause();
      _exit(0);
    }
  }

  ~Child() { end(); }

  Child(const Child&) = delete;
  Child& operator=(const Child&) = delete;

  void end() {
    if (pid_ <= 0) return;
    kill(pid_, SIGKILL);
    waitpid(pid_, nullptr, 0);
    pid_ = 0;
  }

  pid_t pid() const { return pid_; }

 private:
  pid_t pid_;
};

TEST(ProcFilesystem, ReadsAllFacts) {
  const TemporaryFolder proc;
  const auto program = proc.writeProgram("bin/python3.11");
  proc.write("42/stat", statusLine("a) S 7 (b", 17, 9000));
  proc.write("42/cmdline", std::string("py thon\0--flag\0\0last\0", 21));
  proc.write("42/cgroup", "3:cpu:/x\n1:name=systemd:/old/app-a-1.scope\n0::/new/app-b-1.scope\n");
  fs::create_symlink(program, proc.path("42/exe"));
  fs::create_symlink("/work", proc.path("42/cwd"));

  EXPECT_EQ(ProcFilesystem(proc.path()).process(42),
            (ProcessFacts{.parentID = 17,
                          .startTimeTicks = 9000,
                          .name = "a) S 7 (b",
                          .executable = program,
                          .arguments = {"py thon", "--flag", "", "last"},
                          .workingFolder = "/work",
                          .controlGroup = "/new/app-b-1.scope"}));
}

TEST(ProcFilesystem, TakesWhatItGets) {
  const TemporaryFolder proc;
  proc.write("1/stat", statusLine("bare", 0, 1));
  proc.write("2/stat", statusLine("old", 1, 2));
  proc.write("2/cgroup", "1:name=systemd:/old/app-a-1.scope\n0::/\n");
  fs::create_symlink("/opt/app/app (deleted)", proc.path("2/exe"));
  proc.write("3/stat", "3 (cut");
  proc.write("4/cmdline", "no status");

  const ProcFilesystem processes(proc.path());
  EXPECT_EQ(processes.process(1), (ProcessFacts{.startTimeTicks = 1, .name = "bare"}));
  ASSERT_TRUE(processes.process(2));
  EXPECT_EQ(processes.process(2)->controlGroup, "/old/app-a-1.scope");
  EXPECT_EQ(processes.process(2)->executable, "/opt/app/app");
  for (const std::int32_t pid : {3, 4, 5, 0, -1})
    EXPECT_EQ(processes.process(pid), std::nullopt) << pid;
}

TEST(ProcFilesystem, KnowsNoExecutableThatIsAnotherFileHere) {
  // A relative link stands for the path of a sandbox: followed from the process it leads to one file, read as
  // a path of this program's to another.
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

TEST(ProcFilesystem, ReadsRealProcesses) {
  const ProcFilesystem processes;
  Child child;
  const auto own = processes.process(getpid());
  const auto its = processes.process(child.pid());
  ASSERT_TRUE(own && its);
  EXPECT_EQ(own->executable, canonicalPath("/proc/self/exe"));
  EXPECT_EQ(own->parentID, getppid());
  EXPECT_EQ(its->executable, own->executable);
  EXPECT_EQ(its->arguments, own->arguments);
  EXPECT_EQ(its->parentID, getpid());
  EXPECT_GE(its->startTimeTicks, own->startTimeTicks);

  const auto pid = child.pid();
  child.end();
  EXPECT_EQ(processes.process(pid), std::nullopt);
}

TEST(ProcProcessInformation, GivesShortNames) {
  const TemporaryFolder proc;
  proc.write("7/comm", "two words\n");
  proc.write("8/comm", "\n\n");
  const ProcProcessInformation information(proc.path());
  EXPECT_EQ(information.ownProcessID(), getpid());

  std::array<char, 16> name{};
  EXPECT_EQ(information.procName(7, name), 9);
  EXPECT_STREQ(name.data(), "two words");
  EXPECT_EQ(information.procName(8, name), 1);
  EXPECT_STREQ(name.data(), "\n");
  EXPECT_EQ(information.procName(7, std::span(name).first(4)), 3);
  EXPECT_STREQ(name.data(), "two");
  EXPECT_LE(information.procName(7, {}), 0);
  for (const std::int32_t pid : {9, 0, -1})
    EXPECT_LE(information.procName(pid, name), 0) << pid;
}

TEST(ProcProcessInformation, KnowsRealProcesses) {
  std::array<char, 1024> name{};
  EXPECT_EQ(ProcProcessInformation().procName(getpid(), name), 12);
  EXPECT_STREQ(name.data(), "desktop_test");
}

} // namespace
} // namespace sonvel::desktop
