#pragma once

#include "pipewire/graph.h"

#include <pipewire/permission.h>
#include <span>

#include <map>
#include <optional>

namespace sonvel::pipewire {

/// A client's permissions in the server.
struct Permissions {
  std::uint32_t others = 0;                     ///< on all present and future objects, except `exceptions`
  std::map<GlobalID, std::uint32_t> exceptions; ///< on single objects

  std::uint32_t with(GlobalID id) const;
};

/// Decodes the server's list.
Permissions permissionsFrom(std::span<const pw_permission> list);

/// Whether they suffice to take over other clients' streams: to create nodes and links, to see all present
/// and future objects, and to write the streams' targets into the metadata. `metadata` is the object that
/// holds it; none while there is none.
bool allowTaps(const Permissions& permissions, std::optional<GlobalID> metadata);

} // namespace sonvel::pipewire
