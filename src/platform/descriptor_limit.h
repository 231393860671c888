#pragma once

#include <optional>
#include <sys/resource.h>
#include <sys/types.h>

namespace sonvel {

/// Lets this process have as many files open as it may, for as long as this object lives. Programs that call
/// select() fail with more than 1,024, so whoever starts a program gives it the limit of before. One at a
/// time.
class RaisedDescriptorLimit {
 public:
  RaisedDescriptorLimit() noexcept {
    rlimit limit{};
    if (getrlimit(RLIMIT_NOFILE, &limit) != 0) return;
    before_ = limit;
    limit.rlim_cur = limit.rlim_max;
    setrlimit(RLIMIT_NOFILE, &limit);
  }

  ~RaisedDescriptorLimit() {
    lowerFor(0);
    before_.reset();
  }

  RaisedDescriptorLimit(const RaisedDescriptorLimit&) = delete;
  RaisedDescriptorLimit& operator=(const RaisedDescriptorLimit&) = delete;

  /// Gives a child, or the calling process if `process` is 0, the limit of before. One system call, which may
  /// be made between fork and exec.
  static void lowerFor(pid_t process) noexcept {
    if (before_) prlimit(process, RLIMIT_NOFILE, &*before_, nullptr);
  }

 private:
  static inline std::optional<rlimit> before_;
};

} // namespace sonvel
