#pragma once

#include <string>

namespace sonvel {

/// A new random UUID (version 4) as 36 characters, upper case. Any thread.
std::string randomUUID();

} // namespace sonvel
