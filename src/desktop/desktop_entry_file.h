#pragma once

#include "desktop/glib_ptr.h"

#include <gio/gdesktopappinfo.h>

#include <string>

namespace sonvel::desktop {

/// The application that a desktop entry describes. Null if the file is no regular one of at most 1 MiB, or if
/// GIO does not take it for an application that can be started here. Any thread; reads files.
GObjectPtr<GDesktopAppInfo> readDesktopEntry(const std::string& path);

} // namespace sonvel::desktop
