#include "audio/object_access.h"

#include <algorithm>

namespace sonvel {

std::optional<std::string> cfStringProp(AudioHardware& hardware, AudioObjectID object, std::uint32_t selector,
                                        std::uint32_t propertyScope) {
  std::optional<std::string> text;
  const auto status = hardware.getPropertyData(object, {selector, propertyScope, kElementMain}, text);
  if (status != kNoError) return std::nullopt;
  return text;
}

std::optional<std::vector<AudioObjectID>> readSystemObjects(AudioHardware& hardware, std::uint32_t selector) {
  const PropertyAddress address{selector, scope::kGlobal, kElementMain};
  std::uint32_t sizeBytes = 0;
  if (hardware.getPropertyDataSize(kSystemObject, address, sizeBytes) != kNoError) return std::nullopt;

  std::vector<AudioObjectID> objects(sizeBytes / sizeof(AudioObjectID));
  const auto bytes = std::as_writable_bytes(std::span(objects));
  sizeBytes = static_cast<std::uint32_t>(bytes.size());
  if (hardware.getPropertyData(kSystemObject, address, sizeBytes, bytes) != kNoError) return std::nullopt;
  // The list may have shrunk since its size was read.
  objects.resize(std::min(objects.size(), sizeBytes / sizeof(AudioObjectID)));
  return objects;
}

std::vector<AudioObjectID> systemObjectList(AudioHardware& hardware, std::uint32_t selector) {
  return readSystemObjects(hardware, selector).value_or(std::vector<AudioObjectID>());
}

std::vector<AudioObjectID> processObjectList(AudioHardware& hardware) {
  return systemObjectList(hardware, property::kProcessObjectList);
}

} // namespace sonvel
