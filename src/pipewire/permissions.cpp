#include "pipewire/permissions.h"

#include <pipewire/core.h>

namespace sonvel::pipewire {

std::uint32_t Permissions::with(GlobalID id) const {
  const auto exception = exceptions.find(id);
  return exception == exceptions.end() ? others : exception->second;
}

Permissions permissionsFrom(std::span<const pw_permission> list) {
  Permissions permissions;
  for (const auto& [id, mask] : list) {
    if (id == PW_ID_ANY)
      permissions.others = mask;
    else
      permissions.exceptions[id] = mask;
  }
  return permissions;
}

bool allowTaps(const Permissions& permissions, std::optional<GlobalID> metadata) {
  const auto has = [](std::uint32_t mask, std::uint32_t wanted) { return (mask & wanted) == wanted; };
  return has(permissions.others, PW_PERM_R | PW_PERM_X | PW_PERM_M) &&
         has(permissions.with(PW_ID_CORE), PW_PERM_R | PW_PERM_X) &&
         (!metadata || has(permissions.with(*metadata), PW_PERM_RWX));
}

} // namespace sonvel::pipewire
