#pragma once

#include <optional>
#include <sys/resource.h>
#include <sys/types.h>

namespace sonvel {

/// Raises this process's limit of open files to the maximum allowed, for as long as this object lives.
/// Programs that call select() fail with more than 1,024 descriptors, so child processes must get the
/// previous limit (lowerFor). One at a time.
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

  /// Sets the previous limit for a child, or for the calling process if `process` is 0. One system call, safe
  /// between fork and exec.
  static void lowerFor(pid_t process) noexcept {
    if (before_) prlimit(process, RLIMIT_NOFILE, &*before_, nullptr);
  }

 private:
  static inline std::optional<rlimit> before_;
};

} // namespace sonvel
