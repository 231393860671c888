#pragma once

#include <glib-object.h>

#include <memory>

namespace sonvel::desktop {

struct UnrefObject {
  void operator()(gpointer object) const noexcept { g_object_unref(object); }
};

/// Owns one reference to a GObject.
template <typename T> using GObjectPtr = std::unique_ptr<T, UnrefObject>;

/// Frees a GLib object with its own release function.
template <auto release> struct Release {
  template <typename T> void operator()(T* object) const noexcept { release(object); }
};

struct FreeStrings {
  void operator()(gchar** strings) const noexcept { g_strfreev(strings); }
};

/// Owns a null-terminated array of strings.
using GStrings = std::unique_ptr<gchar*, FreeStrings>;

} // namespace sonvel::desktop
