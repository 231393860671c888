#pragma once

#include <filesystem>

namespace sonvel::desktop {

/// Where the user's settings are kept. Any thread.
std::filesystem::path configurationFolder();

/// Where the user's running services leave their sockets; empty where the session has none. Any thread.
std::filesystem::path runtimeFolder();

} // namespace sonvel::desktop
