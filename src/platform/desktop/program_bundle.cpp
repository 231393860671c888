#include "platform/desktop/program_bundle.h"

namespace sonvel::desktop {

std::optional<std::string> ProgramBundle::bundleIdentifier() const {
  return "com.quellmarsh.sonvel";
}

} // namespace sonvel::desktop
