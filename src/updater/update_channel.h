#pragma once

#include <array>
#include <optional>
#include <set>
#include <string>
#include <string_view>

namespace sonvel {

/// The release channels that a build can follow.
enum class UpdateChannel { stable, beta };

/// Every channel, in order.
inline constexpr std::array kAllUpdateChannels{UpdateChannel::stable, UpdateChannel::beta};

/// "stable" or "beta".
std::string_view rawValue(UpdateChannel channel) noexcept;

/// The channel of that name, written exactly so; none for anything else.
std::optional<UpdateChannel> updateChannel(std::string_view rawValue) noexcept;

/// What a build on `channel` may be offered besides the items that name no channel.
std::set<std::string> sparkleAllowedChannels(UpdateChannel channel);

} // namespace sonvel
