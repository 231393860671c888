#include "session/eventually.h"
#include "session/listener.h"
#include "session/player.h"
#include "session/private_session.h"

#include <gmock/gmock.h>

#include <array>
#include <csignal>
#include <fstream>
#include <iterator>
#include <sstream>
#include <unistd.h>

namespace sonvel::session {
namespace {

using namespace std::chrono_literals;
using testing::IsEmpty;
using testing::Not;

namespace fs = std::filesystem;

constexpr Tone kTone{.frequency = 1000, .amplitude = 0.5};

TEST(PrivateSession, PlaysToSpeakersAndHasNoOtherSinksThanItsOwn) {
  const PrivateSession session;
  EXPECT_EQ(session.defaultSink(), "Speakers");
  std::vector<std::string> sinks;
  const Graph graph = session.graph();
  for (const GraphObject& object : graph.objects)
    if (object.property("media.class") == "Audio/Sink")
      sinks.emplace_back(object.property("node.description"));
  EXPECT_THAT(sinks, testing::UnorderedElementsAre("Speakers", "Headphones"));
}

TEST(PrivateSession, TakesSinksAwayAndBringsThemBack) {
  PrivateSession session;
  session.removeSink("Speakers");
  EXPECT_TRUE(session.waitForGraph([](const Graph& graph) { return graph.defaultSink() == "Headphones"; }));
  session.addSink("Speakers", "Speakers");
  session.setDefaultSink("Speakers");
  const Player player(session, PlayerKind::pwPlay, kTone);
  EXPECT_TRUE(Listener(session, "Speakers").waitForTone(kTone, 0.001));
  EXPECT_THROW(session.removeSink("Nowhere"), std::runtime_error);
}

TEST(PrivateSession, GoesOnAfterEachDaemonWasKilledOrStopped) {
  PrivateSession session;
  // WirePlumber first: it can't set up sinks anew that have played of late.
  for (const Daemon daemon : {Daemon::wireplumber, Daemon::pulse, Daemon::pipewire}) {
    const pid_t before = session.pid(daemon);
    session.kill(daemon);
    EXPECT_EQ(session.pid(daemon), 0);
    session.restart(daemon);
    EXPECT_NE(session.pid(daemon), before);
    Player player(session, PlayerKind::paplay, kTone);
    EXPECT_TRUE(Listener(session, "Speakers").waitForTone(kTone, 0.001)) << static_cast<int>(daemon);
  }
  session.stop(Daemon::pipewire);
  EXPECT_THROW(static_cast<void>(
                   GraphConnection(session.socketPath()).snapshot(std::chrono::steady_clock::now() + 200ms)),
               std::runtime_error);
  session.resume(Daemon::pipewire);
  EXPECT_EQ(session.defaultSink(), "Speakers");
}

TEST(PrivateSession, ShowsWhatTheSessionManagerRemembers) {
  const PrivateSession session;
  const Player player(session, PlayerKind::paplay, kTone);
  ASSERT_TRUE(Listener(session, "Speakers").waitForTone(kTone, 0.001));
  // Not with pactl, which now and then reports success and moves nothing.
  GraphConnection connection(session.socketPath());
  const auto deadline = std::chrono::steady_clock::now() + 20s;
  const Graph graph = connection.snapshot(deadline);
  const std::uint32_t stream = graph.node("paplay")->id;
  const std::string target(graph.node("Headphones")->property("object.serial"));
  connection.setMetadata("default", stream, "target.object", "Spa:Id", target);
  ASSERT_TRUE(connection.waitFor(
      [&](const Graph& now) { return now.metadataValue("default", stream, "target.object") == target; },
      deadline));
  EXPECT_TRUE(Listener(session, "Headphones").waitForTone(kTone, 0.001));
  EXPECT_TRUE(eventually([&] { return session.stateFile().find("Headphones") != std::string::npos; }))
      << session.stateFile();
}

TEST(PrivateSession, ChangesItsQuantum) {
  PrivateSession session({.quantum = 256, .dataDirectories = {}});
  const Listener speakers(session, "Speakers");
  session.setQuantum(512);
  const Player player(session, PlayerKind::pwPlay, kTone);
  EXPECT_TRUE(speakers.waitForTone(kTone, 0.001));
}

// The session as a process of its own, with all its files below a folder that is ours to look into.
class SessionProcess : public testing::Test {
 protected:
  SessionProcess() {
    std::string pattern = (fs::temp_directory_path() / "sonvel-test-XXXXXX").string();
    folder_ = mkdtemp(pattern.data());
  }

  ~SessionProcess() override { fs::remove_all(folder_); }

  [[nodiscard]] ChildProcess start(const std::vector<std::string>& commandLine,
                                   Environment environment = {}) const {
    environment["TMPDIR"] = folder_;
    std::vector<std::string> arguments = {"private-session"};
    arguments.insert(arguments.end(), commandLine.begin(), commandLine.end());
    return ChildProcess(
        {.program = SONVEL_PRIVATE_SESSION, .arguments = arguments, .environment = environment});
  }

  [[nodiscard]] std::vector<std::string> filesLeft() const {
    std::vector<std::string> left;
    for (const auto& entry : fs::directory_iterator(folder_))
      left.push_back(entry.path().filename());
    return left;
  }

  // Command lines of the processes that have our folder in their environment.
  [[nodiscard]] std::vector<std::string> processesLeft() const {
    std::vector<std::string> left;
    for (const auto& entry : fs::directory_iterator("/proc")) {
      const auto read = [&entry](const char* name) {
        std::ifstream file(entry.path() / name);
        std::ostringstream text; // unlike an iterator it takes the end of the process for the end of the file
        text << file.rdbuf();
        return text.str();
      };
      if (read("environ").find(folder_.string()) != std::string::npos) left.push_back(read("cmdline"));
    }
    return left;
  }

  void expectNothingLeft() const {
    EXPECT_TRUE(eventually([&] { return processesLeft().empty(); }))
        << testing::PrintToString(processesLeft());
    EXPECT_TRUE(eventually([&] { return filesLeft().empty(); })) << testing::PrintToString(filesLeft());
  }

  fs::path folder_;
};

TEST_F(SessionProcess, PassesTheExitCodeOn) {
  EXPECT_EQ(start({"sh", "-c", "pactl info >/dev/null && exit 7"}).wait(), 7);
  expectNothingLeft();
}

TEST_F(SessionProcess, LeavesNothingHoweverItEnds) {
  for (const int signal : {SIGTERM, SIGINT, SIGKILL}) {
    const std::string started = (folder_ / "started").string();
    ChildProcess session = start({"sh", "-c", "touch " + started + "; sleep 600"});
    ASSERT_TRUE(eventually([&] { return fs::exists(started); }));
    ASSERT_THAT(processesLeft(), Not(IsEmpty()));
    fs::remove(started);
    session.signal(signal);
    session.wait();
    expectNothingLeft();
  }
}

TEST_F(SessionProcess, LeavesNothingWhenADaemonIsMissing) {
  const fs::path programs = folder_ / "programs";
  fs::create_directory(programs);
  for (const char* name : {"dbus-daemon", "pipewire"})
    fs::create_symlink(fs::path("/usr/bin") / name, programs / name);
  fs::create_symlink("/bin/false", programs / "wireplumber");
  EXPECT_EQ(start({"true"}, {{"PATH", programs}}).wait(), 125);
  fs::remove_all(programs);
  expectNothingLeft();
}

} // namespace
} // namespace sonvel::session
