#pragma once

#include <spa/pod/pod.h>
#include <spa/utils/dict.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace sonvel::pipewire {

/// The value of a key; none if missing.
std::optional<std::string> textOf(const spa_dict* properties, const char* key);

/// The number of a key; none if missing or not a number.
std::optional<std::uint32_t> numberOf(const spa_dict* properties, const char* key);

bool isTrue(const spa_dict* properties, const char* key);

/// The `channelVolumes` of a Props object; empty if missing.
std::vector<float> channelVolumesOf(const spa_pod* props);

} // namespace sonvel::pipewire
