#pragma once

#include "model/mixer_view_model.h"

#include <memory>

namespace sonvel {

/// The application, which asks whether it may quit and waits for the reply.
class TerminatingApplication {
 public:
  virtual ~TerminatingApplication() = default;

  /// Answers a deferred request; true lets the application quit. Main thread.
  virtual void replyToApplicationShouldTerminate(bool mayTerminate) = 0;
};

/// The immediate answer to a request to quit.
enum class TerminateReply {
  later = 2, ///< wait for replyToApplicationShouldTerminate()
};

/// Owns the model. Lets the program quit only when every application has its own output back. Main thread.
class AppDelegate final : public std::enable_shared_from_this<AppDelegate> {
 public:
  /// Creates the model without calling the audio system.
  explicit AppDelegate(MixerDependencies dependencies);

  MixerViewModel& model() const noexcept { return *model_; }

  std::weak_ptr<MixerViewModel> weakModel() const noexcept { return model_; }

  /// Starts giving every application its output back, and replies to `sender` when all have been tried,
  /// without a time limit and never from inside this call. A further request changes nothing and gets no
  /// reply. `sender` outlives the reply.
  TerminateReply applicationShouldTerminate(TerminatingApplication& sender);

 private:
  Executor& mainThread_;
  const std::shared_ptr<MixerViewModel> model_;
  bool isTerminating_ = false;
};

} // namespace sonvel
