#pragma once

#include "model/channel_list.h"
#include "model/mixer_dependencies.h"
#include "model/task.h"

#include <unordered_set>

namespace sonvel {

/// The loop that runs while the panel is open or the model is watched: it reads the meters every 120 ms,
/// rebuilds taps that have gone silent, and starts the less frequent duties. Part of the model. Main thread.
class Polling {
 public:
  /// The less frequent duties. Each is awaited before the tick continues; the model is kept alive until then.
  struct Duties {
    std::function<QCoro::Task<>()> refreshMaster;           ///< every fifth tick, starting with the first
    std::function<QCoro::Task<>()> reconcile;               ///< every tenth tick, starting with the first
    std::function<QCoro::Task<>(ChannelList::Row)> rebuild; ///< for the row of a silent tap
  };

  /// The referents outlive this object. `audibleIDs` are the processes reported as playing.
  Polling(const MixerDependencies& dependencies, const ChannelList& channels,
          const std::unordered_set<AudioObjectID>& audibleIDs, Duties duties);

  /// Starts the loop and cancels a running one. `self` shares ownership of the model. A tick keeps the model
  /// alive until the next one is due.
  void start(const std::shared_ptr<Polling>& self);

  /// The loop ends after its current step.
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
