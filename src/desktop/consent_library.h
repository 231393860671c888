#pragma once

#include "platform/audio_server.h"
#include "platform/dynamic_library.h"

namespace sonvel::desktop {

/// The privacy-consent framework of a desktop that has no consent service for sound: what the sound server
/// lets this program do is the consent. It is a part of the program and is found under the framework's paths;
/// no other library is, and no file is ever looked for. There is nobody who could be asked, so that it has no
/// function for that.
///
/// One exists at a time: the functions that it offers are plain pointers and speak for the one that exists.
/// Without one they answer that nothing has been decided. Any thread.
class ConsentLibrary final : public DynamicLibraries {
 public:
  /// `server` outlives this object.
  explicit ConsentLibrary(const AudioServer& server);

  /// Waits for a function of it that runs.
  ~ConsentLibrary() override;

  ConsentLibrary(const ConsentLibrary&) = delete;
  ConsentLibrary& operator=(const ConsentLibrary&) = delete;

  std::optional<LibraryHandle> open(const char* path, int mode) override;
  Function symbol(LibraryHandle library, const char* name) override;
};

} // namespace sonvel::desktop
