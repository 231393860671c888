#pragma once

#include <cstdint>
#include <functional>
#include <optional>

namespace sonvel {

/// Identifies a loaded library.
enum class LibraryHandle : std::uintptr_t {};

/// Resolve every symbol of a library when it is loaded.
inline constexpr int kRTLDNow = 2;

/// Functions found by name at run time. Any thread; may read files; none throws.
class DynamicLibraries {
 public:
  /// A function of a library; cast it to its real type before the call.
  using Function = void (*)();

  virtual ~DynamicLibraries() = default;

  /// Loads the library at `path` for the life of the process. None if it does not exist.
  virtual std::optional<LibraryHandle> open(const char* path, int mode) = 0;

  /// Looks up a function. Null if the library has none of that name.
  virtual Function symbol(LibraryHandle library, const char* name) = 0;
};

/// The functions of the privacy-consent framework, found in a library by name. `service` is NUL-terminated
/// UTF-8 that is only read during the call; the options are always null.
namespace consent {

/// 0 if the service is allowed, 1 if it is refused, any other value if undecided. Any thread; does not block
/// and shows nothing to the user.
using Preflight = int(const char* service, const void* options);

/// Asks the user. Returns at once; `completion` is called once, on any thread, with the answer.
using Request = void(const char* service, const void* options,
                     std::function<void(bool isGranted)> completion);

} // namespace consent

} // namespace sonvel
