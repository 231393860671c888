#pragma once

#include <QString>

namespace sonvel {

/// Opens a page of the documentation with the desktop's application for it, which is started outside of what
/// an AppImage has mounted, with the limit of open files that this program was given. False if there is no
/// such file, or no desktop that opens files.
bool openInstalledPage(const QString& path);

} // namespace sonvel
