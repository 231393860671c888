#pragma once

#include "audio/audio_app.h"
#include "platform/audio_hardware.h"

#include <map>
#include <set>
#include <vector>

namespace sonvel {

/// The audio system's process objects, grouped by application. One thread; blocks as the audio system does.
class ApplicationProcesses {
 public:
  /// Reads the current processes. False if unreadable; then nothing has changed.
  bool update(AudioHardware& hardware);

  /// Every process.
  std::vector<AudioObjectID> all() const;

  /// The processes of an application, in the audio system's order.
  const std::vector<AudioObjectID>& of(const std::string& key) const;

  /// `app` with another process of the same application.
  AudioApp appWithProcess(AudioApp app, AudioObjectID process) const;

  /// The bundle identifiers of an application's processes; includes its own if it has one.
  std::set<std::string> bundleIDs(const std::string& key) const;

 private:
  struct Process {
    std::int32_t pid;
    std::optional<std::string> bundleID; ///< not empty
  };

  static std::string keyOf(const Process& process);
  static Process read(AudioHardware& hardware, AudioObjectID object);

  std::map<AudioObjectID, Process> processes_;
  std::map<std::string, std::vector<AudioObjectID>> byKey_;
};

/// The stable key of a process without a bundle identifier.
std::string keyOfPID(std::int32_t pid);

/// Whether the key is one of keyOfPID().
bool isKeyOfPID(const std::string& key);

} // namespace sonvel
