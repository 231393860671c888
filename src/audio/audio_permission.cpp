#include "audio/audio_permission.h"

#include <array>
#include <utility>

namespace sonvel {

namespace {

constexpr std::array kFrameworkPaths{"/System/Library/PrivateFrameworks/TCC.framework/TCC",
                                     "TCC.framework/TCC"};
constexpr auto kPreflightName = "TCCAccessPreflight";
constexpr auto kRequestName = "TCCAccessRequest";
constexpr auto kService = "kTCCServiceAudioCapture";

template <class Signature>
Signature* functionOf(DynamicLibraries& libraries, std::optional<LibraryHandle> library, const char* name) {
  if (!library) return nullptr;
  return reinterpret_cast<Signature*>(libraries.symbol(*library, name)); // the name determines the type
}

} // namespace

AudioCaptureStatus AudioPermission::status() {
  const auto preflight = functionOf<consent::Preflight>(libraries_, framework(), kPreflightName);
  if (preflight == nullptr) return AudioCaptureStatus::unknown;
  switch (preflight(kService, nullptr)) {
  case 0:
    return AudioCaptureStatus::authorized;
  case 1:
    return AudioCaptureStatus::denied;
  default:
    return AudioCaptureStatus::undetermined;
  }
}

bool AudioPermission::request(std::function<void(bool isGranted)> completion) {
  const auto ask = functionOf<consent::Request>(libraries_, framework(), kRequestName);
  if (ask == nullptr) return false;
  ask(kService, nullptr, std::move(completion));
  return true;
}

std::optional<LibraryHandle> AudioPermission::framework() {
  std::call_once(isLoaded_, [this] {
    for (const auto* path : kFrameworkPaths)
      if (!framework_) framework_ = libraries_.open(path, kRTLDNow);
  });
  return framework_;
}

} // namespace sonvel
