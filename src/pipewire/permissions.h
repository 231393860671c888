#pragma once

#include "pipewire/graph.h"

#include <pipewire/permission.h>
#include <span>

#include <map>
#include <optional>

namespace sonvel::pipewire {

/// What the server lets one of its clients do.
struct Permissions {
  std::uint32_t others = 0;                     ///< with all that is or will be there, but the exceptions
  std::map<GlobalID, std::uint32_t> exceptions; ///< with single objects

  std::uint32_t with(GlobalID id) const;
};

/// Reads the server's list.
Permissions permissionsFrom(std::span<const pw_permission> list);

/// Whether they are enough to take over other clients' streams: to have nodes and links made, to see whatever
/// is there and comes, and to write in the metadata where streams go. `metadata` is the object that holds it,
/// none while there is none.
bool allowTaps(const Permissions& permissions, std::optional<GlobalID> metadata);

} // namespace sonvel::pipewire
