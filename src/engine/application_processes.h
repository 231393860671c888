#pragma once

#include "audio/audio_app.h"
#include "platform/audio_hardware.h"

#include <set>
#include <vector>

namespace sonvel {

/// The process objects of the audio system, by the application that they belong to. One thread; blocks as the
/// audio system does.
class ApplicationProcesses {
 public:
  /// Looks which processes there are now. False if that can't be read; then nothing has changed.
  bool update(AudioHardware& hardware);

  /// Every process.
  std::vector<AudioObjectID> all() const;

  /// The processes of an application, in the order of the audio system.
  std::vector<AudioObjectID> of(const std::string& key) const;

  /// The record of another process of the same application.
  AudioApp appWithProcess(AudioApp app, AudioObjectID process) const;

  /// The bundle identifiers of an application's processes, and its own if it has one.
  std::set<std::string> bundleIDs(const std::string& key) const;

 private:
  struct Process {
    AudioObjectID object;
    std::int32_t pid;
    std::optional<std::string> bundleID; ///< not empty
  };

  static std::string keyOf(const Process& process);
  static Process read(AudioHardware& hardware, AudioObjectID object);

  std::vector<Process> processes_;
};

/// The stable key of a process without a bundle identifier.
std::string keyOfPID(std::int32_t pid);

} // namespace sonvel
