#pragma once

#include "platform/bundle_information.h"

namespace sonvel::desktop {

/// This program as the desktop knows it.
class ProgramBundle final : public BundleInformation {
 public:
  std::optional<std::string> bundleIdentifier() const override;
};

} // namespace sonvel::desktop
