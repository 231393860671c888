#pragma once

#include "session/private_session.h"

#include <string>

namespace sonvel::sound {

/// A process of its own that controls everything that plays in a session, so that a test can kill it.
class TapHolder {
 public:
  /// Returns when it controls them. Throws std::runtime_error if it can't.
  TapHolder(const session::PrivateSession& session, float gain);
  ~TapHolder();
  TapHolder(const TapHolder&) = delete;
  TapHolder& operator=(const TapHolder&) = delete;

  /// How many applications it controls.
  [[nodiscard]] int held() const noexcept { return held_; }

  /// SIGKILL; returns when it has ended.
  void kill() noexcept { process_.kill(); }

  /// Lets it give all back and end; its exit code.
  int finish();

 private:
  session::ChildProcess process_;
  int input_ = -1;
  int held_ = 0;
};

} // namespace sonvel::sound
