#pragma once

#include "platform/audio_server.h"
#include "platform/dynamic_library.h"

namespace sonvel::desktop {

/// The privacy-consent framework on desktops without a consent service for sound: the sound server's
/// permissions are the consent. The framework's paths resolve to functions of this program; no other library
/// and no file is ever opened. As nobody can be asked, it has no request function.
///
/// Only one may exist: its functions are plain pointers that use the existing object. Without one they answer
/// "undecided". Any thread.
class ConsentLibrary final : public DynamicLibraries {
 public:
  /// `server` outlives this object.
  explicit ConsentLibrary(const AudioServer& server);

  /// Waits while one of its functions runs.
  ~ConsentLibrary() override;

  ConsentLibrary(const ConsentLibrary&) = delete;
  ConsentLibrary& operator=(const ConsentLibrary&) = delete;

  std::optional<LibraryHandle> open(const char* path, int mode) override;
  Function symbol(LibraryHandle library, const char* name) override;
};

} // namespace sonvel::desktop
