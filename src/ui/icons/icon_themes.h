#pragma once

#include <QIcon>

namespace sonvel {

/// Lets QIcon::fromTheme find applications' icons even if Qt does not know the desktop: adds the standard
/// folders, and a default theme if there is none. Qt's own settings come first. Folders whose theme
/// description is not a regular file are left out. Call before QIcon::fromTheme, on the main thread, after
/// creating the application object.
void completeIconThemes();

/// The theme icon of that name, which an application chose. Null if there is none, or if a file that Qt might
/// read for it is not a regular one of bounded size. Main thread.
QIcon themedIcon(const QString& name);

} // namespace sonvel
