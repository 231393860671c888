#pragma once

#include "session/child_process.h"
#include "session/graph.h"

#include <array>
#include <chrono>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

namespace sonvel::session {

enum class Daemon { pipewire, wireplumber, pulse };

struct SessionOptions {
  int quantum = 1024; // frames of each graph cycle; fixed, whatever clients ask for
  /// Directories of desktop entries and the like for XDG_DATA_DIRS, before the system's own.
  std::vector<std::filesystem::path> dataDirectories;
  /// Arguments of the server's access module, as its configuration has them: who may do what.
  std::string accessArguments{};
};

/// A sound system of our own, apart from the desktop's: D-Bus, PipeWire, WirePlumber and the PulseAudio
/// socket on private folders, with the sinks "Speakers" (the default) and "Headphones": 48 kHz, two channels.
///
/// All of it ends with this object, and also with this process, however that ends; no file stays. Make it on
/// a thread that outlives it. One thread at a time. Whatever can't be had within 10 seconds throws
/// std::runtime_error with the end of the daemon's log.
class PrivateSession {
 public:
  explicit PrivateSession(const SessionOptions& options = {});
  ~PrivateSession();
  PrivateSession(const PrivateSession&) = delete;
  PrivateSession& operator=(const PrivateSession&) = delete;

  /// What a program needs to find this session and nothing else.
  [[nodiscard]] const Environment& environment() const noexcept { return environment_; }

  /// Puts environment() into this process, before other threads read the environment.
  void apply() const;
  /// The start of a command that runs in this session.
  [[nodiscard]] Command command(const std::string& program, std::vector<std::string> arguments) const;

  /// The folder that holds all files of this session.
  [[nodiscard]] const std::filesystem::path& folder() const noexcept { return folder_; }

  [[nodiscard]] std::filesystem::path socketPath() const;
  /// Where tone files go.
  [[nodiscard]] std::filesystem::path toneFolder() const;
  /// Where a copy of that name is, or will be.
  [[nodiscard]] std::filesystem::path programPath(const std::string& name) const;
  /// A copy of a program under another name, for a process that the desktop is to see under that name.
  [[nodiscard]] std::filesystem::path copyProgram(const std::filesystem::path& program,
                                                  const std::string& name) const;

  [[nodiscard]] pid_t pid(Daemon daemon) const noexcept;
  /// SIGKILL; returns when the daemon has ended.
  void kill(Daemon daemon);
  /// Ends it if it still runs, starts it and blocks until it serves. A restart of PipeWire restarts the other
  /// two as well, as a desktop does.
  void restart(Daemon daemon);
  /// SIGSTOP and SIGCONT: the daemon hangs, and goes on.
  void stop(Daemon daemon);
  void resume(Daemon daemon);

  /// Another null sink like the first two, as a device that is plugged in; lasts until it is removed or
  /// PipeWire ends. Returns when it can be played to.
  void addSink(const std::string& name, const std::string& description);
  /// Takes any sink away, the first two included; addSink brings it back.
  void removeSink(const std::string& name);
  /// As the user would choose it; returns when it is so.
  void setDefaultSink(const std::string& name);
  [[nodiscard]] std::string defaultSink() const;
  /// Changes the number of frames of each graph cycle.
  void setQuantum(int frames);

  [[nodiscard]] Graph graph() const;
  /// Blocks until the graph is as wanted; false after the time given.
  [[nodiscard]] bool waitForGraph(const std::function<bool(const Graph&)>& wanted,
                                  std::chrono::milliseconds within = std::chrono::seconds{20}) const;

  /// WirePlumber's memory of streams (volumes, targets) as it stands on disk; empty when there is none yet.
  /// It is written a second after a change.
  [[nodiscard]] std::string stateFile() const;
  /// The log of a daemon so far.
  [[nodiscard]] std::string log(Daemon daemon) const;

 private:
  void startKeeper();
  void tellKeeper(const std::string& line) const noexcept;
  void startBus();
  void start(Daemon daemon);
  void waitUntilReady(Daemon daemon);
  [[nodiscard]] bool isReady(Daemon daemon) const;
  void endAll() noexcept;
  [[nodiscard]] ChildProcess launch(const std::string& name, std::vector<std::string> arguments) const;
  [[nodiscard]] ChildProcess& process(Daemon daemon) noexcept;

  std::filesystem::path folder_;
  Environment environment_;
  int keeperInput_ = -1;
  ChildProcess keeper_; // removes the folder, also when we can't
  ChildProcess bus_;
  std::array<ChildProcess, 3> daemons_;
};

} // namespace sonvel::session
