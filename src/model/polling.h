#pragma once

#include "model/channel_list.h"
#include "model/mixer_dependencies.h"
#include "model/task.h"

#include <unordered_set>

namespace sonvel {

/// The loop that runs while the panel is open: it reads the meters every 120 ms, rebuilds taps that have gone
/// silent, and does what is due less often. A part of the model. Main thread.
class Polling {
 public:
  /// What else is due. Each is awaited before the tick goes on, and the model is held until then.
  struct Duties {
    std::function<QCoro::Task<>()> refreshMaster;           ///< every fifth tick, from the first on
    std::function<QCoro::Task<>()> reconcile;               ///< every tenth tick, from the first on
    std::function<QCoro::Task<>(ChannelList::Row)> rebuild; ///< the tap of a row that has gone silent
  };

  /// The referents outlive the polling. `audibleIDs` are the processes that are reported as playing.
  Polling(const MixerDependencies& dependencies, const ChannelList& channels,
          const std::unordered_set<AudioObjectID>& audibleIDs, Duties duties);

  /// Starts the loop, and cancels one that runs. `self` shares the ownership of the model. A tick keeps the
  /// model alive until the next one is due.
  void start(const std::shared_ptr<Polling>& self);

  /// The loop ends after the step that it is in.
  void cancel();

 private:
  static QCoro::Task<> run(std::weak_ptr<Polling> weakSelf, Clock& clock, Executor& mainThread,
                           std::stop_token cancellation);
  QCoro::Task<> pollMeters();

  const MixerDependencies& dependencies_;
  const ChannelList& channels_;
  const std::unordered_set<AudioObjectID>& audibleIDs_;
  const Duties duties_;
  std::optional<Task> task_;
};

} // namespace sonvel
