#include "pipewire/process_joining.h"

namespace sonvel::pipewire {

void ProcessJoining::noteStrangers(const GraphIndex& index, DesiredTap& tap) {
  forgetGone(index);
  for (const auto stream : index.streams())
    if (const ProcessKey* process = index.processOf(stream))
      if (arrivals_.try_emplace(*process, lastArrival_ + 1).second) ++lastArrival_;
  tap.lastStranger = lastArrival_;
}

void ProcessJoining::forgetGone(const GraphIndex& index) {
  std::erase_if(arrivals_, [&](const auto& entry) { return index.clientsOf(entry.first).empty(); });
  std::erase_if(identified_, [&](const auto& entry) {
    const auto client = index.graph().clients.find(entry.first);
    return client == index.graph().clients.end() || client->second.serial != entry.second.serial;
  });
}

const std::optional<std::string>& ProcessJoining::bundleIDOf(GlobalID id, const Client& client) {
  const auto [entry, isNew] = identified_.try_emplace(id);
  Identified& identified = entry->second;
  if (isNew || identified.facts != client.facts) // a client may send its properties in pieces
    identified = {client.serial, client.facts, identity_.bundleIdentifier(client.facts)};
  return identified.bundleID;
}

void ProcessJoining::join(const GraphIndex& index, DesiredState& desired) {
  forgetGone(index);
  std::unordered_map<std::string, std::vector<DesiredTap*>> tapsByBundleID;
  for (auto& [id, tap] : desired.taps)
    for (const auto& bundleID : tap.bundleIDs)
      tapsByBundleID[bundleID].push_back(&tap);
  if (tapsByBundleID.empty()) return;
  for (const auto& [id, client] : index.graph().clients) {
    const ProcessKey* process = index.processOfClient(id);
    if (process == nullptr) continue;
    const auto& bundleID = bundleIDOf(id, client);
    const auto taps = bundleID ? tapsByBundleID.find(*bundleID) : tapsByBundleID.end();
    if (taps == tapsByBundleID.end()) continue;
    const auto arrival = arrivals_.find(*process);
    for (DesiredTap* tap : taps->second)
      if (arrival == arrivals_.end() || arrival->second > tap->lastStranger) tap->processes.insert(*process);
  }
}

} // namespace sonvel::pipewire
