#pragma once

#include <QIcon>

namespace sonvel {

/// Lets QIcon::fromTheme find the icons of installed applications also where Qt knows nothing of the desktop:
/// adds the standard folders, and names a theme if there is none. What Qt knows by itself stays first. A
/// folder is left out in which the description of a theme is no regular file. To be called before
/// QIcon::fromTheme, on the main thread, when the application object exists.
void completeIconThemes();

/// The icon of that name, which an application chooses, in the themes. Null if there is none, or if a file
/// that Qt would perhaps read for it is no regular one of bounded size. Main thread.
QIcon themedIcon(const QString& name);

} // namespace sonvel
