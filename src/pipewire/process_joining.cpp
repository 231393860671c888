#include "pipewire/process_joining.h"

#include <algorithm>

namespace sonvel::pipewire {

void ProcessJoining::noteStrangers(const Graph& graph, DesiredTap& tap) {
  tap.formerStrangers.clear();
  for (const auto& [id, node] : graph.nodes)
    if (const auto process = processKeyOfStream(graph, node); process && !tap.processes.contains(*process))
      tap.formerStrangers.insert(*process);
}

const std::optional<std::string>& ProcessJoining::bundleIDOf(const Client& client) {
  const auto [entry, isNew] = bySerial_.try_emplace(client.serial);
  Identified& identified = entry->second;
  if (isNew || identified.facts != client.facts) // a client may send its properties in pieces
    identified = {client.facts, identity_.bundleIdentifier(client.facts)};
  return identified.bundleID;
}

void ProcessJoining::join(const Graph& graph, DesiredState& desired) {
  if (std::ranges::all_of(desired.taps, [](const auto& tap) { return tap.second.bundleIDs.empty(); })) return;
  std::set<ProcessKey> present;
  std::set<std::uint64_t> serials;
  for (const auto& [id, client] : graph.clients) {
    serials.insert(client.serial);
    const auto process = processKeyOf(graph, id);
    if (!process) continue;
    present.insert(*process);
    const auto& bundleID = bundleIDOf(client);
    if (!bundleID) continue;
    for (auto& [tapID, tap] : desired.taps)
      if (tap.bundleIDs.contains(*bundleID) && !tap.formerStrangers.contains(*process))
        tap.processes.insert(*process);
  }
  std::erase_if(bySerial_, [&](const auto& entry) { return !serials.contains(entry.first); });
  for (auto& [tapID, tap] : desired.taps)
    std::erase_if(tap.formerStrangers, [&](const ProcessKey& key) { return !present.contains(key); });
}

} // namespace sonvel::pipewire
