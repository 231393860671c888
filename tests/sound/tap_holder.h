#pragma once

#include "session/private_session.h"

#include <string>

namespace sonvel::sound {

/// A process of its own that controls everything that plays in a session, so that a test can kill it.
class TapHolder {
 public:
  /// Returns when it controls those that it can. Throws std::runtime_error if it does not run.
  TapHolder(const session::PrivateSession& session, float gain);
  ~TapHolder();
  TapHolder(const TapHolder&) = delete;
  TapHolder& operator=(const TapHolder&) = delete;

  /// How many applications it controls.
  [[nodiscard]] int held() const noexcept { return held_; }

  /// Its permission to capture: 0 granted, 1 denied, 2 undetermined.
  [[nodiscard]] int status() { return ask("status"); }

  /// Lets it take over everything that plays once more; how many applications it controls then.
  int take() { return ask("take"); }

  /// SIGKILL; returns when it has ended.
  void kill() noexcept { process_.kill(); }

  /// Lets it give all back and end; its exit code.
  int finish();

 private:
  int ask(const std::string& request);

  session::ChildProcess process_;
  int input_ = -1;
  int output_ = -1;
  int held_ = 0;
};

} // namespace sonvel::sound
