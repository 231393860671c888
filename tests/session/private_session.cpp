#include "session/private_session.h"

#include "session/eventually.h"
#include "session/session_files.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <sys/socket.h>
#include <sys/un.h>
#include <system_error>
#include <unistd.h>

namespace sonvel::session {

namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

constexpr std::chrono::seconds kPatience{20};
constexpr int kAddedSinkPriority = 500; // below Speakers and Headphones, so that it takes nothing over
constexpr std::uint32_t kWholeGraph = 0;

const char* nameOf(Daemon daemon) noexcept {
  switch (daemon) {
  case Daemon::pipewire:
    return "pipewire";
  case Daemon::wireplumber:
    return "wireplumber";
  case Daemon::pulse:
    return "pipewire-pulse";
  }
  return "";
}

std::string contentsOf(const fs::path& path) {
  std::ifstream file(path);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

fs::path makeTemporaryFolder() {
  std::string pattern = (fs::temp_directory_path() / "sonvel-session-XXXXXX").string();
  if (mkdtemp(pattern.data()) == nullptr)
    throw std::system_error(errno, std::generic_category(), "making " + pattern);
  return pattern;
}

Environment makeEnvironment(const SessionFolders& folders, const SessionOptions& options) {
  std::string dataDirectories;
  for (const fs::path& directory : options.dataDirectories)
    dataDirectories += directory.string() + ":";
  const char* inherited = std::getenv("XDG_DATA_DIRS");
  dataDirectories += inherited != nullptr ? inherited : "/usr/local/share:/usr/share";

  Environment environment = {{"HOME", folders.home},
                             {"XDG_RUNTIME_DIR", folders.runtime},
                             {"XDG_CONFIG_HOME", folders.config},
                             {"XDG_STATE_HOME", folders.state},
                             {"XDG_DATA_HOME", folders.data},
                             {"XDG_CACHE_HOME", folders.cache},
                             {"XDG_DATA_DIRS", dataDirectories},
                             {"DBUS_SESSION_BUS_ADDRESS", "unix:path=" + (folders.runtime / "bus").string()},
                             {"PULSE_SERVER", "unix:" + (folders.runtime / "pulse/native").string()},
                             {"PULSE_RUNTIME_PATH", (folders.runtime / "pulse").string()},
                             {"DISABLE_RTKIT", "y"}};
  for (const char* unwanted :
       {"DISPLAY", "WAYLAND_DISPLAY", "PIPEWIRE_REMOTE", "PIPEWIRE_RUNTIME_DIR", "PIPEWIRE_CORE",
        "PIPEWIRE_CONFIG_DIR", "PIPEWIRE_CONFIG_NAME", "PIPEWIRE_NODE", "PIPEWIRE_LATENCY", "PIPEWIRE_RATE",
        "PIPEWIRE_QUANTUM", "PIPEWIRE_PROPS", "PULSE_SINK", "PULSE_PROP", "PULSE_COOKIE",
        "PULSE_CLIENTCONFIG", "XDG_ACTIVATION_TOKEN", "DESKTOP_STARTUP_ID", "DBUS_STARTER_ADDRESS"})
    environment[unwanted] = std::nullopt;
  return environment;
}

// Whether something accepts connections on this socket.
bool serves(const fs::path& path) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  const std::string name = path.string();
  if (name.size() >= sizeof address.sun_path) throw std::runtime_error("too long for a socket: " + name);
  std::ranges::copy(name, std::begin(address.sun_path));
  const int descriptor = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
  const void* generic = &address;
  const bool accepted = connect(descriptor, static_cast<const sockaddr*>(generic), sizeof address) == 0;
  close(descriptor);
  return accepted;
}

// Sleeps until its input ends. Told the session's process group first and "done" at last; without that last
// word we are gone, and it ends what is left in the group before it removes the folder.
constexpr const char* kKeeper = R"(
read -r group
if ! read -r done && [ -n "$group" ]; then
  kill -s KILL -- "-$group"
  tries=0
  while kill -s 0 -- "-$group" && [ $tries -lt 20 ]; do tries=$((tries + 1)); sleep 0.01; done
fi 2>/dev/null
rm -rf -- "$1"
)";

} // namespace

PrivateSession::PrivateSession(const SessionOptions& options)
    : folder_(makeTemporaryFolder()) {
  try {
    const SessionFolders folders(folder_);
    startKeeper();
    writeSessionFiles(folders, options.quantum, options.accessArguments);
    environment_ = makeEnvironment(folders, options);
    startBus();
    for (const Daemon daemon : {Daemon::pipewire, Daemon::wireplumber, Daemon::pulse})
      start(daemon);
    if (!waitForGraph([](const Graph& graph) { return graph.defaultSink() == "Speakers"; }, kPatience))
      throw std::runtime_error("Speakers is not the default sink: " + log(Daemon::wireplumber));
  } catch (...) {
    endAll();
    throw;
  }
}

PrivateSession::~PrivateSession() {
  endAll();
}

void PrivateSession::startKeeper() {
  std::array<int, 2> ends{};
  if (pipe2(ends.data(), O_CLOEXEC) != 0) throw std::system_error(errno, std::generic_category(), "pipe");
  keeperInput_ = ends[1];
  keeper_ = ChildProcess({.program = "/bin/sh",
                          .arguments = {"sh", "-c", kKeeper, "keeper", folder_.string()},
                          .environment = {{"PATH", "/usr/bin:/bin"}},
                          .input = ends[0],
                          .outlivesUs = true});
  close(ends[0]);
}

void PrivateSession::tellKeeper(const std::string& line) const noexcept {
  const std::string text = line + "\n";
  [[maybe_unused]] const ssize_t written = write(keeperInput_, text.data(), text.size());
}

void PrivateSession::startBus() {
  const SessionFolders folders(folder_);
  bus_ = launch("dbus-daemon",
                {"--nofork", "--nopidfile", "--config-file=" + (folders.config / "bus.conf").string()});
  tellKeeper(std::to_string(bus_.pid()));
  if (!eventually([&] { return serves(folders.runtime / "bus"); }, kPatience))
    throw std::runtime_error("no D-Bus: " + contentsOf(folders.logs / "dbus-daemon"));
}

ChildProcess PrivateSession::launch(const std::string& name, std::vector<std::string> arguments) const {
  const fs::path logPath = SessionFolders(folder_).logs / name;
  const int log = open(logPath.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
  Command start = command(name, std::move(arguments));
  start.output = log;
  start.error = log;
  ChildProcess process(start);
  close(log);
  return process;
}

Command PrivateSession::command(const std::string& program, std::vector<std::string> arguments) const {
  arguments.insert(arguments.begin(), fs::path(program).filename());
  return {.program = program,
          .arguments = std::move(arguments),
          .environment = environment_,
          .group = bus_.pid()};
}

void PrivateSession::start(Daemon daemon) {
  process(daemon) = launch(nameOf(daemon), {});
  waitUntilReady(daemon);
}

void PrivateSession::waitUntilReady(Daemon daemon) {
  const bool ready =
      eventually([&] { return isReady(daemon) || !process(daemon).running(); }, kPatience) && isReady(daemon);
  if (!ready) throw std::runtime_error(std::string(nameOf(daemon)) + " is not ready: " + log(daemon));
}

bool PrivateSession::isReady(Daemon daemon) const {
  switch (daemon) {
  case Daemon::pipewire:
    return serves(socketPath()) && graph().node("Headphones") != nullptr;
  case Daemon::wireplumber:
    return !graph().defaultSink().empty();
  case Daemon::pulse:
    return serves(SessionFolders(folder_).runtime / "pulse/native");
  }
  return false;
}

void PrivateSession::endAll() noexcept {
  for (const Daemon daemon : {Daemon::pulse, Daemon::wireplumber, Daemon::pipewire}) {
    process(daemon).signal(SIGCONT);
    process(daemon).end();
  }
  if (bus_.pid() > 0) ::kill(-bus_.pid(), SIGKILL); // the bus leads the group of all that ran in the session
  bus_.kill();
  if (keeperInput_ >= 0) {
    tellKeeper("done");
    close(keeperInput_);
  }
  keeper_.wait();
  std::error_code ignored;
  fs::remove_all(folder_, ignored);
}

void PrivateSession::apply() const {
  for (const auto& [name, value] : environment_) {
    if (value) {
      setenv(name.c_str(), value->c_str(), 1);
    } else {
      unsetenv(name.c_str());
    }
  }
}

fs::path PrivateSession::socketPath() const {
  return SessionFolders(folder_).runtime / "pipewire-0";
}

fs::path PrivateSession::toneFolder() const {
  return SessionFolders(folder_).tones;
}

fs::path PrivateSession::programPath(const std::string& name) const {
  return SessionFolders(folder_).programs / name;
}

fs::path PrivateSession::copyProgram(const fs::path& program, const std::string& name) const {
  fs::path copy = programPath(name);
  if (!fs::exists(copy)) fs::copy_file(fs::canonical(program), copy);
  return copy;
}

ChildProcess& PrivateSession::process(Daemon daemon) noexcept {
  return daemons_[static_cast<std::size_t>(daemon)];
}

pid_t PrivateSession::pid(Daemon daemon) const noexcept {
  return daemons_[static_cast<std::size_t>(daemon)].pid();
}

void PrivateSession::kill(Daemon daemon) {
  process(daemon).kill();
}

void PrivateSession::restart(Daemon daemon) {
  if (daemon == Daemon::pipewire) {
    process(Daemon::pulse).kill();
    process(Daemon::wireplumber).kill();
  }
  process(daemon).kill();
  start(daemon);
  if (daemon == Daemon::pipewire) {
    start(Daemon::wireplumber);
    start(Daemon::pulse);
  }
}

void PrivateSession::stop(Daemon daemon) {
  process(daemon).signal(SIGSTOP);
}

void PrivateSession::resume(Daemon daemon) {
  process(daemon).signal(SIGCONT);
}

void PrivateSession::addSink(const std::string& name, const std::string& description) {
  const auto deadline = Clock::now() + kPatience;
  GraphConnection connection(socketPath());
  connection.createAdapter(sinkProperties(name, description, kAddedSinkPriority));
  const bool added = connection.waitFor(
      [&](const Graph& graph) {
        const GraphObject* sink = graph.node(name);
        return sink != nullptr && std::ranges::count_if(graph.objects, [&](const GraphObject& port) {
                                    return port.type == "Port" &&
                                           port.property("node.id") == std::to_string(sink->id);
                                  }) == 4;
      },
      deadline);
  if (!added) throw std::runtime_error("no sink " + name);
}

void PrivateSession::removeSink(const std::string& name) {
  const auto deadline = Clock::now() + kPatience;
  GraphConnection connection(socketPath());
  const Graph before = connection.snapshot(deadline);
  const GraphObject* sink = before.node(name);
  if (sink == nullptr) throw std::runtime_error("no sink " + name);
  connection.destroy(sink->id);
  if (!connection.waitFor([&](const Graph& graph) { return graph.node(name) == nullptr; }, deadline))
    throw std::runtime_error("can't remove " + name);
}

void PrivateSession::setDefaultSink(const std::string& name) {
  const auto deadline = Clock::now() + kPatience;
  GraphConnection connection(socketPath());
  static_cast<void>(connection.snapshot(deadline));
  connection.setMetadata("default", kWholeGraph, "default.configured.audio.sink", "Spa:String:JSON",
                         R"({ "name": ")" + name + R"(" })");
  if (!connection.waitFor([&](const Graph& graph) { return graph.defaultSink() == name; }, deadline))
    throw std::runtime_error(name + " does not become the default sink");
}

std::string PrivateSession::defaultSink() const {
  return graph().defaultSink();
}

void PrivateSession::setQuantum(int frames) {
  const auto deadline = Clock::now() + kPatience;
  GraphConnection connection(socketPath());
  static_cast<void>(connection.snapshot(deadline));
  const std::string value = std::to_string(frames);
  connection.setMetadata("settings", kWholeGraph, "clock.force-quantum", "", value);
  if (!connection.waitFor(
          [&](const Graph& graph) {
            return graph.metadataValue("settings", kWholeGraph, "clock.force-quantum") == value;
          },
          deadline))
    throw std::runtime_error("can't set the quantum");
}

Graph PrivateSession::graph() const {
  return GraphConnection(socketPath()).snapshot(Clock::now() + kPatience);
}

bool PrivateSession::waitForGraph(const std::function<bool(const Graph&)>& wanted,
                                  std::chrono::milliseconds within) const {
  return GraphConnection(socketPath()).waitFor(wanted, Clock::now() + within);
}

std::string PrivateSession::stateFile() const {
  return contentsOf(SessionFolders(folder_).state / "wireplumber/restore-stream");
}

std::string PrivateSession::log(Daemon daemon) const {
  return contentsOf(SessionFolders(folder_).logs / nameOf(daemon));
}

} // namespace sonvel::session
