#pragma once

#include <cstdint>
#include <functional>
#include <optional>

namespace sonvel {

/// Names one library that has been loaded.
enum class LibraryHandle : std::uintptr_t {};

/// Resolve every symbol of a library when it is loaded.
inline constexpr int kRTLDNow = 2;

/// Code that is found by name while the program runs. Any thread; may read files; none throws.
class DynamicLibraries {
 public:
  /// A function of a library, to be cast to the type that its name stands for before it is called.
  using Function = void (*)();

  virtual ~DynamicLibraries() = default;

  /// Loads the library at `path`, for the life of the process. None if there is no such library.
  virtual std::optional<LibraryHandle> open(const char* path, int mode) = 0;

  /// Looks a function up. Null if the library has none of that name.
  virtual Function symbol(LibraryHandle library, const char* name) = 0;
};

/// The functions of the privacy-consent framework, which libraries offer by name. The service is text in
/// UTF-8 that ends in a NUL and is only read during the call; the options are always null.
namespace consent {

/// 0 if the service is allowed, 1 if it is refused, any other value if that has not been decided. Any thread;
/// does not wait and shows nothing to the user.
using Preflight = int(const char* service, const void* options);

/// Asks the user. Returns at once; `completion` is called once, on any thread, with whether it is allowed.
using Request = void(const char* service, const void* options,
                     std::function<void(bool isGranted)> completion);

} // namespace consent

} // namespace sonvel
