#include "pipewire/graph.h"

namespace sonvel::pipewire {

const MetadataValue* Graph::metadataOf(GlobalID subject, std::string_view key) const {
  const auto entries = metadata.find(subject);
  if (entries == metadata.end()) return nullptr;
  const auto entry = entries->second.find(key);
  return entry == entries->second.end() ? nullptr : &entry->second;
}

} // namespace sonvel::pipewire
