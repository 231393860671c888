#include "desktop/consent_library.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <mutex>
#include <string_view>

namespace sonvel::desktop {

namespace {

constexpr std::array<std::string_view, 2> kPaths{"/System/Library/PrivateFrameworks/TCC.framework/TCC",
                                                 "TCC.framework/TCC"};
constexpr std::string_view kPreflightName = "TCCAccessPreflight";
constexpr std::string_view kService = "kTCCServiceAudioCapture";
constexpr LibraryHandle kThisLibrary{1};

enum Answer : int { allowed = 0, refused = 1, undecided = 2 };

/// The server that the functions report on. Written only by the constructor and destructor of ConsentLibrary.
struct Registration {
  std::mutex mutex;
  const AudioServer* server = nullptr; ///< null without a ConsentLibrary
};

Registration& registration() {
  static Registration only;
  return only;
}

int preflight(const char* service, const void* /*options*/) {
  if (service != kService) return undecided;
  const std::lock_guard lock(registration().mutex);
  if (registration().server == nullptr) return undecided;
  switch (registration().server->rights()) {
  case AudioServer::Rights::granted:
    return allowed;
  case AudioServer::Rights::restricted:
    return refused;
  case AudioServer::Rights::unknown:
    break;
  }
  return undecided;
}

} // namespace

ConsentLibrary::ConsentLibrary(const AudioServer& server) {
  const std::lock_guard lock(registration().mutex);
  assert(registration().server == nullptr);
  registration().server = &server;
}

ConsentLibrary::~ConsentLibrary() {
  const std::lock_guard lock(registration().mutex);
  registration().server = nullptr;
}

std::optional<LibraryHandle> ConsentLibrary::open(const char* path, int /*mode*/) {
  if (std::ranges::find(kPaths, std::string_view(path)) == kPaths.end()) return std::nullopt;
  return kThisLibrary;
}

DynamicLibraries::Function ConsentLibrary::symbol(LibraryHandle library, const char* name) {
  if (library != kThisLibrary || name != kPreflightName) return nullptr;
  return reinterpret_cast<Function>(static_cast<consent::Preflight*>(&preflight)); // cast back by its caller
}

} // namespace sonvel::desktop
