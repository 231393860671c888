#pragma once

#include "platform/bundle_information.h"
#include "platform/updater.h"

#include <memory>
#include <set>
#include <string>
#include <utility>

namespace sonvel {

/// Limits an updater to the channels that a build follows. Immutable; any thread.
class SonvelSparkleChannelDelegate final : public UpdaterDelegate {
 public:
  explicit SonvelSparkleChannelDelegate(std::set<std::string> allowedChannels)
      : allowedChannels_(std::move(allowedChannels)) {}

  std::set<std::string> allowedChannels(const StandardUpdater&) const override { return allowedChannels_; }

 private:
  const std::set<std::string> allowedChannels_;
};

/// The program's updates: on in a build with a valid update configuration, otherwise off. Main thread.
class SparkleUpdateController {
 public:
  /// The name of what updates a copy that must not update itself.
  static constexpr const char* updateManagerKey = "AppUpdateManagedBy";

  /// Starts an updater of `updaters` if `bundle` has a valid configuration and nothing else updates it. Both
  /// are used only in this call.
  SparkleUpdateController(const BundleInformation& bundle, UpdaterProvider& updaters);
  SparkleUpdateController(const SparkleUpdateController&) = delete;
  SparkleUpdateController& operator=(const SparkleUpdateController&) = delete;

  bool isAvailable() const noexcept { return updater_ != nullptr; }

  /// A check requested by the user; the updater shows its progress. No effect if updates are off.
  void checkForUpdates();

 private:
  std::shared_ptr<const SonvelSparkleChannelDelegate> channelDelegate_; ///< the updater holds it weakly
  std::unique_ptr<StandardUpdater> updater_;
};

} // namespace sonvel
