#include "pipewire/pod_reading.h"

#include <spa/param/audio/raw.h>
#include <spa/param/props.h>
#include <spa/pod/iter.h>
#include <spa/pod/parser.h>
#include <spa/utils/string.h>

#include <array>
#include <charconv>
#include <cstring>

namespace sonvel::pipewire {

std::optional<std::string> textOf(const spa_dict* properties, const char* key) {
  const char* text = properties == nullptr ? nullptr : spa_dict_lookup(properties, key);
  return text == nullptr ? std::nullopt : std::optional<std::string>(text);
}

std::optional<std::uint32_t> numberOf(const spa_dict* properties, const char* key) {
  const auto text = textOf(properties, key);
  if (!text) return std::nullopt;
  std::uint32_t number = 0;
  const auto [end, error] = std::from_chars(text->data(), text->data() + text->size(), number);
  return error == std::errc() && end == text->data() + text->size() ? std::optional(number) : std::nullopt;
}

bool isTrue(const spa_dict* properties, const char* key) {
  return properties != nullptr && spa_atob(spa_dict_lookup(properties, key));
}

std::vector<float> channelVolumesOf(const spa_pod* props) {
  if (props == nullptr || !spa_pod_is_object(props)) return {};
  const spa_pod_prop* volumes = spa_pod_find_prop(props, nullptr, SPA_PROP_channelVolumes);
  if (volumes == nullptr) return {};
  std::array<float, SPA_AUDIO_MAX_CHANNELS> values{};
  const auto count = spa_pod_copy_array(&volumes->value, SPA_TYPE_Float, values.data(), values.size());
  return {values.begin(), values.begin() + count};
}

} // namespace sonvel::pipewire
