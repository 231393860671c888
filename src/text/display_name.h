#pragma once

#include <string>
#include <string_view>

namespace sonvel {

/// Makes a name that a program or device chose safe to show: valid UTF-8 in one line of at most 256
/// characters, single spaces, no control characters, none that change the direction of writing, and at most
/// four combining marks per character. Empty if nothing visible is left. Any thread.
std::string displayName(std::string_view text);

} // namespace sonvel
