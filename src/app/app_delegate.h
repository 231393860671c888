#pragma once

#include "model/mixer_view_model.h"

#include <memory>

namespace sonvel {

/// What asks whether it may end, and waits for the reply.
class TerminatingApplication {
 public:
  virtual ~TerminatingApplication() = default;

  /// The answer to a request that was deferred; true lets the application end. Main thread.
  virtual void replyToApplicationShouldTerminate(bool mayTerminate) = 0;
};

/// What a request to end is answered with at once.
enum class TerminateReply {
  later = 2, ///< wait for the reply
};

/// Owns the model, and lets the program end only when every application has its own output back. Main thread.
class AppDelegate final : public std::enable_shared_from_this<AppDelegate> {
 public:
  /// Makes the model; makes no call of the audio system.
  explicit AppDelegate(MixerDependencies dependencies);

  MixerViewModel& model() const noexcept { return *model_; }

  std::weak_ptr<MixerViewModel> weakModel() const noexcept { return model_; }

  /// Begins to give every application its output back, and replies to `sender` when that has been tried,
  /// however long it takes: never from inside this call. A further request changes nothing and gets no reply
  /// of its own. `sender` outlives the reply.
  TerminateReply applicationShouldTerminate(TerminatingApplication& sender);

 private:
  Executor& mainThread_;
  const std::shared_ptr<MixerViewModel> model_;
  bool isTerminating_ = false;
};

} // namespace sonvel
