#pragma once

#include "session/child_process.h"

#include <string>

namespace sonvel::testing {

/// An X11 display of our own, without a window manager. It ends with this object, and with this process.
class VirtualDisplay {
 public:
  /// Returns when it serves; throws std::runtime_error when it doesn't.
  VirtualDisplay();

  /// What a program needs to show itself there, as part of its environment.
  [[nodiscard]] session::Environment environment() const;

 private:
  std::string name_; // ":3"
  session::ChildProcess server_;
};

} // namespace sonvel::testing
