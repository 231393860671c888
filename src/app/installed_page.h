#pragma once

#include <QString>

namespace sonvel {

/// Opens a documentation page with the desktop's application for it. That application gets the environment
/// from outside an AppImage and this program's original limit of open files. False if there is no such file,
/// or no desktop that opens files.
bool openInstalledPage(const QString& path);

} // namespace sonvel
