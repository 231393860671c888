#include "updater/update_channel.h"

namespace sonvel {

std::string_view rawValue(UpdateChannel channel) noexcept {
  return channel == UpdateChannel::beta ? "beta" : "stable";
}

std::optional<UpdateChannel> updateChannel(std::string_view text) noexcept {
  for (const UpdateChannel channel : kAllUpdateChannels)
    if (rawValue(channel) == text) return channel;
  return std::nullopt;
}

std::set<std::string> sparkleAllowedChannels(UpdateChannel channel) {
  if (channel == UpdateChannel::stable) return {};
  return {std::string(rawValue(channel))};
}

} // namespace sonvel
