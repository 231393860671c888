#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace sonvel::desktop {

/// The application IDs that the name of a systemd unit may stand for, likeliest first; empty for units that
/// are not named after an application. Understands the names that desktops give the scopes and services of
/// applications ("app-<launcher>-<ID>-<random>.scope", "app-<ID>@<random>.service"), those of applications
/// that D-Bus started, and those of snaps.
std::vector<std::string> applicationIDsOfUnit(std::string_view unit);

} // namespace sonvel::desktop
