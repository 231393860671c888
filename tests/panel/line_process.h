#pragma once

#include "session/child_process.h"

#include <chrono>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace sonvel::testing {

/// A program that is talked with in lines, on its standard input and output. Ends with this object.
class LineProcess {
 public:
  /// Throws std::system_error when it can't be started.
  LineProcess(const std::string& program, std::vector<std::string> arguments,
              session::Environment environment);
  ~LineProcess();
  LineProcess(const LineProcess&) = delete;
  LineProcess& operator=(const LineProcess&) = delete;

  void send(std::string_view line) const;
  /// The next line it writes; nothing when it ends or is silent for so long.
  [[nodiscard]] std::optional<std::string> nextLine(std::chrono::milliseconds within = kPatience);
  /// Reads on until this line has come; false when it ends or is silent for too long.
  [[nodiscard]] bool awaitLine(std::string_view wanted, std::chrono::milliseconds within = kPatience);
  /// Its exit code, or 128 plus a signal; nothing when it still runs after so long.
  [[nodiscard]] std::optional<int> exitCode(std::chrono::milliseconds within = kPatience);

  [[nodiscard]] session::ChildProcess& process() noexcept { return process_; }

 private:
  static constexpr std::chrono::seconds kPatience{10};

  int conversation_ = -1;
  session::ChildProcess process_;
  std::string unread_;
};

} // namespace sonvel::testing
