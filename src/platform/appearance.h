#pragma once

#include <cstdint>
#include <functional>
#include <optional>

namespace sonvel {

/// How the user wants programs to look.
struct Appearance {
  enum class ColorScheme { noPreference, dark, light };

  ColorScheme colorScheme = ColorScheme::noPreference;
  std::optional<std::uint32_t> accentColor; ///< 0xRRGGBB; none if the desktop knows none
  bool prefersReducedMotion = false;        ///< nothing is to move by itself

  bool operator==(const Appearance&) const = default;
};

/// The desktop's setting of that. Main thread.
class DesktopAppearance {
 public:
  virtual ~DesktopAppearance() = default;

  /// As it was last heard of. Does not wait; all defaults until the desktop has answered, or if it has no
  /// such settings.
  virtual Appearance current() const = 0;

  /// Calls `changed`, on the main thread and at the latest soon after, each time `current` gives something
  /// else than before. Replaces what was to be called.
  virtual void onChange(std::function<void()> changed) = 0;
};

} // namespace sonvel
