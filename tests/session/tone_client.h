#pragma once

#include "session/player.h"

#include <cstdint>
#include <string>

namespace sonvel::session {

enum class Signal {
  tone,     // a sine of frequency and amplitude
  impulses, // one sample of amplitude wherever the graph's clock position is a multiple of period, else zeros
  counter, // counts frames: (n mod kCounterPeriod + 1) / kCounterPeriod times amplitude; see counterFaults in
           // analysis.h
  silence, // zeros
};

struct StreamOptions {
  Signal signal = Signal::tone;
  Tone tone;          // its amplitude is that of every signal
  int period = 48000; // frames from impulse to impulse
  int rate = 48000;   // Hz
  int channels = 2;   // all carry the same
  bool corked = false;
  std::map<std::string, std::string> properties; // of the stream's node
};

struct ToneClientOptions {
  std::string binaryName; // runs a copy of the program under this name, when not empty
  bool helper = false;    // plays in a child process of the same program, as browsers do
  std::map<std::string, std::string> properties; // of the client, e.g. application.name, application.id
  Environment environment;
};

/// A native PipeWire client in a process of its own, playing exactly what it is told on any number of
/// streams. Every call returns when the client has done it; it throws std::runtime_error with what the client
/// answered, or when it doesn't answer for 5 seconds.
class ToneClient {
 public:
  explicit ToneClient(const PrivateSession& session, const ToneClientOptions& options = {});
  ~ToneClient();
  ToneClient(const ToneClient&) = delete;
  ToneClient& operator=(const ToneClient&) = delete;

  /// Opens a stream, which is ready when this returns, and returns its node's global id.
  std::uint32_t open(const std::string& stream, const StreamOptions& options = {});
  void cork(const std::string& stream);
  void uncork(const std::string& stream);
  void setAmplitude(const std::string& stream, double amplitude);
  void close(const std::string& stream);

  /// Of the process that plays.
  [[nodiscard]] pid_t pid() const noexcept { return playingPid_; }

  /// Of the process that was started; differs from pid() with a helper.
  [[nodiscard]] pid_t parentPid() const noexcept { return process_.pid(); }

  /// SIGKILL; returns when it has ended.
  void kill() noexcept { process_.kill(); }

  void stop() noexcept { process_.end(); }

 private:
  std::string ask(const std::string& request);

  ChildProcess process_;
  int conversation_ = -1; // a socket: the process's input and output
  std::string unread_;
  pid_t playingPid_ = 0;
};

} // namespace sonvel::session
