#pragma once

#include "session/child_process.h"

#include <string>

namespace sonvel::testing {

/// A display that nobody sees, with no window manager. It ends with this object, and with this process.
class VirtualDisplay {
 public:
  /// Returns when it serves; throws std::runtime_error when it doesn't within 20 seconds.
  VirtualDisplay();

  [[nodiscard]] const std::string& name() const noexcept { return name_; }

  /// What a program needs to show its windows there.
  [[nodiscard]] session::Environment environment() const;

 private:
  session::ChildProcess server_;
  std::string name_;
};

} // namespace sonvel::testing
