#pragma once

#include <string>
#include <string_view>

namespace sonvel {

/// A name that a program or a device gave itself, fit to be shown: valid UTF-8 in one line of at most 256
/// characters, single spaces, no control characters, none that change the direction of writing, and at most
/// four combining marks on a character. Empty if nothing that can be seen is left. Any thread.
std::string displayName(std::string_view text);

} // namespace sonvel
