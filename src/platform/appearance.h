#pragma once

#include <cstdint>
#include <functional>
#include <optional>

namespace sonvel {

/// How the user wants programs to look.
struct Appearance {
  enum class ColorScheme { noPreference, dark, light };

  ColorScheme colorScheme = ColorScheme::noPreference;
  std::optional<std::uint32_t> accentColor; ///< 0xRRGGBB; none if the desktop has no such setting
  bool prefersHighContrast = false;
  bool prefersReducedMotion = false; ///< the user wants no animations

  bool operator==(const Appearance&) const = default;
};

/// The desktop's appearance settings. Main thread.
class DesktopAppearance {
 public:
  virtual ~DesktopAppearance() = default;

  /// The last known settings. Does not block. Defaults until the desktop has answered, or if it has no such
  /// settings.
  virtual Appearance current() const = 0;

  /// Calls `changed` on the main thread soon after current() changes. Replaces the callback of an earlier
  /// call.
  virtual void onChange(std::function<void()> changed) = 0;
};

} // namespace sonvel
