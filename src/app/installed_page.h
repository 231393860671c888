#pragma once

#include <QString>
#include <functional>

namespace sonvel {

/// Opens a documentation page with the desktop's application for it. That application gets the environment
/// from outside an AppImage and this program's original limit of open files. `failed` is called, at once or
/// later from the event loop, if there is no such file, no desktop that opens files, or it says that it could
/// not. Main thread; does not block.
void openInstalledPage(const QString& path, std::function<void()> failed);

} // namespace sonvel
