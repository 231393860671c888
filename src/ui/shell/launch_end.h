#pragma once

class QWindow;

namespace sonvel::ui {

/// Tells an X11 desktop that a launch has led to this window: the window may take the focus, and the pointer
/// no longer shows that a program starts. The launch is the one named by the environment variable
/// DESKTOP_STARTUP_ID, which is removed, so that no child inherits it; without it, and on other platforms,
/// nothing else is done. Call before the window is shown or raised. Main thread.
void endLaunch(QWindow& window);

} // namespace sonvel::ui
