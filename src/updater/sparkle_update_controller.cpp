#include "updater/sparkle_update_controller.h"

#include "updater/sonvel_sparkle_channel_delegate.h"
#include "updater/update_feed_configuration.h"

namespace sonvel {

SparkleUpdateController::SparkleUpdateController(const BundleInformation& bundle, UpdaterProvider& updaters) {
  const auto configuration = UpdateFeedConfiguration::fromBundle(bundle);
  if (!configuration) return;
  channelDelegate_ =
      std::make_shared<const SonvelSparkleChannelDelegate>(sparkleAllowedChannels(configuration->channel));
  updater_ = updaters.startUpdater(
      {configuration->feedURL.toEncoded().toStdString(), configuration->publicKey}, channelDelegate_);
}

SparkleUpdateController::~SparkleUpdateController() = default;

void SparkleUpdateController::checkForUpdates() {
  if (updater_) updater_->checkForUpdates();
}

} // namespace sonvel
