#pragma once

#include <filesystem>
#include <optional>
#include <string>

namespace sonvel::updater {

/// How this copy of the program came to be here, which says how it can be replaced.
struct Installation {
  enum class Kind {
    singleFile, ///< an AppImage or a program of one file, which this user may replace
    package,    ///< the desktop's package installer put it there
  };

  Kind kind;
  std::filesystem::path program; ///< the file to replace, and to start afterwards
};

/// What installationOf goes by.
struct InstallationFacts {
  std::filesystem::path executable;                ///< the file that runs
  std::optional<std::filesystem::path> appImage;   ///< what the environment says is the image's file
  std::optional<std::filesystem::path> mountPoint; ///< and where it is mounted
};

/// Files under /usr belong to packages, /usr/local aside, whatever this user may write. What the environment
/// says of an AppImage counts only if the running file lies in its mount. Reads the file system.
Installation installationOf(const InstallationFacts& facts);

/// Of the running program.
Installation ownInstallation();

} // namespace sonvel::updater
