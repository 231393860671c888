#pragma once

#include "desktop/glib_ptr.h"

#include <gio/gdesktopappinfo.h>

#include <string>

namespace sonvel::desktop {

/// Reads a desktop entry. Null unless it is a regular file of at most 1 MiB that GIO accepts as an
/// application that can be started here. Any thread; reads files.
GObjectPtr<GDesktopAppInfo> readDesktopEntry(const std::string& path);

} // namespace sonvel::desktop
