#pragma once

#include "updater/appcast.h"
#include "updater/program_version.h"

#include <optional>
#include <set>
#include <string>

namespace sonvel::updater {

/// What an item is measured against.
struct ChoiceCriteria {
  ProgramVersion installed;
  std::set<std::string> allowedChannels; ///< besides items without a channel
  ProgramVersion system;
};

/// What to offer.
struct Choice {
  std::optional<AppcastItem> item; ///< the newest that is newer than what is installed and runs here
  bool needsNewerSystem = false;   ///< no item, though there is a newer one for newer systems
};

/// Items whose version can't be read are passed over, as are those whose minimum system version can't.
Choice chooseUpdate(const Appcast& appcast, const ChoiceCriteria& criteria);

} // namespace sonvel::updater
