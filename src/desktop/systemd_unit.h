#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace sonvel::desktop {

/// The application IDs that a systemd unit's name may stand for, likeliest first; empty if it is not named
/// after an application. Knows the desktops' names for scopes and services of applications
/// ("app-<launcher>-<ID>-<random>.scope", "app-<ID>@<random>.service"), those of D-Bus activated
/// applications, and those of snaps.
std::vector<std::string> applicationIDsOfUnit(std::string_view unit);

} // namespace sonvel::desktop
