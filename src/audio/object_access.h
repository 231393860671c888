#pragma once

#include "platform/audio_hardware.h"

#include <concepts>

namespace sonvel {

// Reads of the audio system that return "none" on failure. Any thread except an IOProc's; they block as the
// audio system does; none throws except std::bad_alloc.

/// Reads a number property.
template <class Number>
  requires std::integral<Number> || std::floating_point<Number>
std::optional<Number> numberProp(AudioHardware& hardware, AudioObjectID object,
                                 const PropertyAddress& address) {
  Number value{};
  std::uint32_t sizeBytes = sizeof value;
  const auto status = hardware.getPropertyData(object, address, sizeBytes,
                                               std::as_writable_bytes(std::span<Number, 1>(&value, 1)));
  if (status != kNoError) return std::nullopt;
  return value;
}

/// Reads an integer property of the whole object.
template <std::integral Integer>
std::optional<Integer> scalarProp(AudioHardware& hardware, AudioObjectID object, std::uint32_t selector,
                                  std::uint32_t propertyScope) {
  return numberProp<Integer>(hardware, object, {selector, propertyScope, kElementMain});
}

/// Reads a string property of the whole object. A null reference gives none.
std::optional<std::string> cfStringProp(AudioHardware& hardware, AudioObjectID object, std::uint32_t selector,
                                        std::uint32_t propertyScope = scope::kGlobal);

/// Reads an object list of the system object, in the system's order. None if unreadable.
std::optional<std::vector<AudioObjectID>> readSystemObjects(AudioHardware& hardware, std::uint32_t selector);

/// As readSystemObjects; empty if unreadable.
std::vector<AudioObjectID> systemObjectList(AudioHardware& hardware, std::uint32_t selector);

/// All processes that are clients of the audio system, in the system's order.
std::vector<AudioObjectID> processObjectList(AudioHardware& hardware);

} // namespace sonvel
