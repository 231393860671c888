#pragma once

#include <memory>
#include <string>

struct xcb_connection_t;

namespace sonvel::testing {

/// Looks at the windows of a display as its server has them. One thread.
class ScreenWatch {
 public:
  /// Throws std::runtime_error when there is no such display.
  explicit ScreenWatch(const std::string& display);

  /// Whether a window of this title is on the screen.
  [[nodiscard]] bool hasWindow(const std::string& title) const;
  /// Whether one is that has been drawn into: a row of points near its top, where every window of ours has
  /// its heading, is of more than one colour.
  [[nodiscard]] bool isPainted(const std::string& title) const;

 private:
  [[nodiscard]] unsigned find(const std::string& title) const;

  struct Disconnect {
    void operator()(xcb_connection_t* connection) const noexcept;
  };

  std::unique_ptr<xcb_connection_t, Disconnect> connection_;
  unsigned root_ = 0;
};

} // namespace sonvel::testing
