#pragma once

#include "platform/updater.h"

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

} // namespace sonvel
