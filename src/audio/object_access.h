#pragma once

#include "platform/audio_hardware.h"

#include <concepts>

namespace sonvel {

// Reads of the audio system that take a failure for an absence. Any thread but an IOProc's; they block as the
// audio system does, and none throws but for want of memory.

/// Reads a property that is one number of the type `Number`.
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

/// Reads a property that is one integer of the type `Integer`, for the object as a whole.
template <std::integral Integer>
std::optional<Integer> scalarProp(AudioHardware& hardware, AudioObjectID object, std::uint32_t selector,
                                  std::uint32_t propertyScope) {
  return numberProp<Integer>(hardware, object, {selector, propertyScope, kElementMain});
}

/// Reads a property that is a string, for the object as a whole. A null reference is an absence.
std::optional<std::string> cfStringProp(AudioHardware& hardware, AudioObjectID object, std::uint32_t selector,
                                        std::uint32_t propertyScope = scope::kGlobal);

/// Reads a property of the system object that is a list of objects, in the system's order. None if it can't
/// be read.
std::optional<std::vector<AudioObjectID>> readSystemObjects(AudioHardware& hardware, std::uint32_t selector);

/// As readSystemObjects; empty if it can't be read.
std::vector<AudioObjectID> systemObjectList(AudioHardware& hardware, std::uint32_t selector);

/// Every process that is a client of the audio system, in the system's order.
std::vector<AudioObjectID> processObjectList(AudioHardware& hardware);

} // namespace sonvel
