#pragma once

namespace sonvel {

/// Lets QIcon::fromTheme find the icons of installed applications also where Qt knows nothing of the desktop:
/// adds the standard folders, and names a theme if there is none. What Qt knows by itself stays first. To be
/// called once, on the main thread, when the application object exists.
void completeIconThemes();

} // namespace sonvel
