#pragma once

#include "platform/audio_types.h"

#include <optional>
#include <type_traits>
#include <variant>

namespace sonvel::simulated {

/// The value of a property. A list may be cut when read, a number may not; a string without a value is a null
/// reference.
using PropertyList = std::vector<std::uint32_t>;
using PropertyText = std::optional<std::string>;
using PropertyValue = std::variant<PropertyList, std::uint32_t, std::int32_t, float, PropertyText>;

/// The value's bytes; none for strings.
inline std::optional<std::span<const std::byte>> bytesOf(const PropertyValue& value) {
  const auto bytes = [](const auto& held) -> std::optional<std::span<const std::byte>> {
    using Held = std::decay_t<decltype(held)>;
    if constexpr (std::is_same_v<Held, PropertyText>)
      return std::nullopt;
    else if constexpr (std::is_same_v<Held, PropertyList>)
      return std::as_bytes(std::span(held));
    else
      return std::as_bytes(std::span(&held, 1));
  };
  return std::visit(bytes, value);
}

} // namespace sonvel::simulated
