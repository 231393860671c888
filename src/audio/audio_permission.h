#pragma once

#include "platform/dynamic_library.h"

#include <functional>
#include <mutex>
#include <optional>

namespace sonvel {

/// Whether this program may capture the sound of others.
enum class AudioCaptureStatus {
  authorized,
  denied,
  undetermined, ///< the user has not decided yet
  unknown,      ///< it cannot be learnt
};

/// The permission to capture the sound of other programs, as the privacy-consent framework knows it. One for
/// the life of the process: it loads the framework once, on first use, and keeps it.
///
/// Any thread may call any member.
class AudioPermission {
 public:
  /// Opens the settings at the place where the user decides on this permission.
  static constexpr const char* settingsURLString =
      "x-apple.systempreferences:com.apple.preference.security?Privacy_AudioCapture";

  /// Loads nothing yet. `libraries` outlives this object.
  explicit AudioPermission(DynamicLibraries& libraries) noexcept
      : libraries_(libraries) {}

  /// Shows nothing to the user and does not wait, except for the framework to load on first use.
  AudioCaptureStatus status();

  /// Asks the user. If it returns true, `completion` is called once, on any thread, with whether it was
  /// granted. If it returns false nobody can be asked, and `completion` is never called.
  bool request(std::function<void(bool isGranted)> completion);

 private:
  std::optional<LibraryHandle> framework();

  DynamicLibraries& libraries_;
  std::once_flag isLoaded_;
  std::optional<LibraryHandle> framework_; ///< none if it is not to be had
};

} // namespace sonvel
