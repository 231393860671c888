#include "desktop/desktop_entries.h"
#include "desktop/desktop_identity.h"
#include "desktop/temporary_folder.h"

#include <gtest/gtest.h>

#include <array>
#include <filesystem>
#include <sys/socket.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace sonvel::desktop {
namespace {

/// A real process that answers line for line. It runs its program when this object is made.
class EchoProcess {
 public:
  explicit EchoProcess(const std::string& program) {
    std::array<int, 2> ends{};
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()) != 0) return;
    pid_ = fork();
    if (pid_ == 0) {
      dup2(ends[1], STDIN_FILENO);
      dup2(ends[1], STDOUT_FILENO);
      execl(program.c_str(), program.c_str(), nullptr);
      _exit(1);
    }
    close(ends[1]);
    std::array<char, 2> answer{'?', '\n'};
    isRunning_ = send(ends[0], answer.data(), 2, MSG_NOSIGNAL) == 2 && read(ends[0], answer.data(), 2) > 0;
    line_ = ends[0];
  }

  ~EchoProcess() { end(); }

  EchoProcess(const EchoProcess&) = delete;
  EchoProcess& operator=(const EchoProcess&) = delete;

  void end() {
    if (line_ >= 0) close(line_);
    if (pid_ > 0) waitpid(pid_, nullptr, 0);
    line_ = -1;
    isRunning_ = false;
  }

  bool isRunning() const { return isRunning_; }

  AudioClient client() const {
    AudioClient client;
    client.processID = pid_;
    return client;
  }

 private:
  pid_t pid_ = 0;
  int line_ = -1;
  bool isRunning_ = false;
};

TEST(DesktopIdentityOfRealProcesses, IsThatOfTheirEntries) {
  const TemporaryFolder folder;
  const auto program = folder.path("echo-program");
  std::filesystem::copy_file("/bin/cat", program);
  const auto script =
      folder.writeProgram("echo-script", "#!/bin/sh\nwhile read line; do echo \"$line\"; done\n");
  const std::string head = "[Desktop Entry]\nType=Application\nName=Echo\nExec=";
  folder.write("applications/real.program.desktop", head + program + " %U\n");
  folder.write("applications/real.script.desktop", head + script + " %U\n");
  const InstalledDesktopEntries entries({.applications = {folder.path("applications")}, .programs = {}});
  const ProcFilesystem processes;
  const DesktopIdentity identity(processes, entries);

  EchoProcess first(program);
  EchoProcess second(script);
  EchoProcess unknown("/bin/cat");
  ASSERT_TRUE(first.isRunning() && second.isRunning() && unknown.isRunning());
  EXPECT_EQ(identity.bundleIdentifier(first.client()), "real.program");
  EXPECT_EQ(identity.bundleIdentifier(second.client()), "real.script");
  EXPECT_EQ(identity.bundleIdentifier(unknown.client()), std::nullopt);
  first.end();
  EXPECT_EQ(identity.bundleIdentifier(first.client()), std::nullopt);
}

TEST(DesktopIdentityOfRealProcesses, AnswersThreadsWhileApplicationsAreInstalled) {
  constexpr int kRounds = 30;
  const TemporaryFolder folder;
  const InstalledDesktopEntries entries({.applications = {folder.path("applications")}, .programs = {}});
  const ProcFilesystem processes;
  const DesktopIdentity identity(processes, entries);
  EchoProcess player("/bin/cat");
  ASSERT_TRUE(player.isRunning());
  const auto ask = [&] {
    for (int i = 0; i < kRounds; ++i) {
      auto client = player.client();
      client.applicationID = "claimed.id";
      const auto id = identity.bundleIdentifier(client);
      EXPECT_TRUE(id == "installed" || id == "claimed.id") << id.value_or("none");
    }
  };
  std::thread first(ask);
  std::thread second(ask);
  folder.write("applications/other.desktop", "[Desktop Entry]\nType=Application\nName=Other\nExec=/bin/sh\n");
  folder.write("applications/installed.desktop",
               "[Desktop Entry]\nType=Application\nName=Cat\nExec=/bin/cat\n");
  first.join();
  second.join();
  EXPECT_EQ(identity.bundleIdentifier(player.client()), "installed");
}

} // namespace
} // namespace sonvel::desktop
