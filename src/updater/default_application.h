#pragma once

#include <filesystem>

namespace sonvel::updater {

/// Opens `file` with the application that this user's desktop has for files of its type. False if there is
/// none, or it can't be started.
bool openWithDefaultApplication(const std::filesystem::path& file);

} // namespace sonvel::updater
