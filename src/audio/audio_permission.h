#pragma once

#include "platform/dynamic_library.h"

#include <functional>
#include <mutex>
#include <optional>

namespace sonvel {

/// Whether this program may capture other programs' sound.
enum class AudioCaptureStatus {
  authorized,
  denied,
  undetermined, ///< the user has not decided yet
  unknown,      ///< cannot be read
};

/// The permission to capture other programs' sound, from the privacy-consent framework. One per process: it
/// loads the framework once, on first use, and keeps it.
///
/// Any thread may call any member.
class AudioPermission {
 public:
  /// The address of the settings page for this permission.
  static constexpr const char* settingsURLString =
      "x-apple.systempreferences:com.apple.preference.security?Privacy_AudioCapture";

  /// Loads nothing. `libraries` outlives this object.
  explicit AudioPermission(DynamicLibraries& libraries) noexcept
      : libraries_(libraries) {}

  /// Shows nothing to the user. Does not block, except for loading the framework on first use.
  AudioCaptureStatus status();

  /// Asks the user. If it returns true, `completion` is called once, on any thread, with the answer. If it
  /// returns false nobody can be asked, and `completion` is never called.
  bool request(std::function<void(bool isGranted)> completion);

 private:
  std::optional<LibraryHandle> framework();

  DynamicLibraries& libraries_;
  std::once_flag isLoaded_;
  std::optional<LibraryHandle> framework_; ///< none if it could not be loaded
};

} // namespace sonvel
