#pragma once

#include <filesystem>

namespace sonvel::desktop {

/// The user's configuration folder. Any thread.
std::filesystem::path configurationFolder();

/// The folder for sockets of the user's services; empty if the session has none. Any thread.
std::filesystem::path runtimeFolder();

} // namespace sonvel::desktop
