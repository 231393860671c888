#pragma once

#include "platform/bundle_information.h"
#include "platform/updater.h"

#include <memory>
#include <set>
#include <string>
#include <utility>

namespace sonvel {

/// Keeps an updater to the channels that a build follows. The set never changes, so any thread may ask.
class SonvelSparkleChannelDelegate final : public UpdaterDelegate {
 public:
  explicit SonvelSparkleChannelDelegate(std::set<std::string> allowedChannels)
      : allowedChannels_(std::move(allowedChannels)) {}

  std::set<std::string> allowedChannels(const StandardUpdater&) const override { return allowedChannels_; }

 private:
  const std::set<std::string> allowedChannels_;
};

/// The program's updates: on for a build that carries a valid update configuration, off for the whole run for
/// every other. Main thread.
class SparkleUpdateController {
 public:
  /// Names, in words, what updates a copy that must not update itself.
  static constexpr const char* updateManagerKey = "AppUpdateManagedBy";

  /// Starts an updater of `updaters` if `bundle` has a valid configuration and nothing else updates it, and
  /// asks `updaters` for nothing otherwise. Both are used in this call only.
  SparkleUpdateController(const BundleInformation& bundle, UpdaterProvider& updaters);
  SparkleUpdateController(const SparkleUpdateController&) = delete;
  SparkleUpdateController& operator=(const SparkleUpdateController&) = delete;

  bool isAvailable() const noexcept { return updater_ != nullptr; }

  /// A check that the user wants; the updater shows how it goes. Does nothing where updates are off.
  void checkForUpdates();

 private:
  std::shared_ptr<const SonvelSparkleChannelDelegate> channelDelegate_; ///< the updater holds it weakly
  std::unique_ptr<StandardUpdater> updater_;
};

} // namespace sonvel
