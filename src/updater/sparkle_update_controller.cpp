#include "updater/sparkle_update_controller.h"

#include "updater/update_feed_configuration.h"

#include <variant>

namespace sonvel {
namespace {

/// An additional key during a change of keys. Updates work without it, so an invalid one is ignored.
std::string additionalKeyOf(const BundleInformation& bundle) {
  const auto value = bundle.objectForInfoKey("AppUpdateAdditionalPublicEDKey");
  const std::string* text = value ? std::get_if<std::string>(&*value) : nullptr;
  return text ? QString::fromStdString(*text).trimmed().toStdString() : std::string();
}

} // namespace

SparkleUpdateController::SparkleUpdateController(const BundleInformation& bundle, UpdaterProvider& updaters) {
  if (bundle.objectForInfoKey(updateManagerKey)) return;
  const auto configuration = UpdateFeedConfiguration::fromBundle(bundle);
  if (!configuration) return;
  channelDelegate_ =
      std::make_shared<const SonvelSparkleChannelDelegate>(sparkleAllowedChannels(configuration->channel));
  updater_ = updaters.startUpdater({.feedURL = configuration->feedURL.toEncoded().toStdString(),
                                    .publicKey = configuration->publicKey,
                                    .additionalPublicKey = additionalKeyOf(bundle)},
                                   channelDelegate_);
}

void SparkleUpdateController::checkForUpdates() {
  if (updater_) updater_->checkForUpdates();
}

} // namespace sonvel
