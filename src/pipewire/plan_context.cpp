#include "pipewire/plan_context.h"

namespace sonvel::pipewire {

namespace {

bool isFrontSide(const std::string& channel) {
  return channel == "FL" || channel == "FR";
}

} // namespace

PlanContext::PlanContext(const GraphIndex& graph, const DesiredState& desired, const OwnedObjects& owned)
    : index_(graph)
    , desired_(desired)
    , owned_(owned) {
  for (const auto& [id, tap] : desired.taps) {
    tapByName_[tap.nodeName] = id;
    if (tap.standsBy && !tap.isLeaving) readTaps_.push_back(id);
  }
  for (const auto& [id, filter] : desired.filters) {
    if (filter.isStopping) continue;
    for (const auto tap : filter.taps)
      if (const auto found = desired.taps.find(tap);
          found != desired.taps.end() && found->second.isMuted && !found->second.isLeaving)
        readTaps_.push_back(tap);
  }
  std::ranges::sort(readTaps_);
}

std::vector<GlobalID> PlanContext::streamsOf(const DesiredTap& tap) const {
  std::vector<GlobalID> streams;
  for (const auto& process : tap.processes)
    std::ranges::copy(index_.streamsOf(process), std::back_inserter(streams));
  return streams;
}

std::optional<AudioObjectID> PlanContext::tapNamed(std::string_view nodeName) const {
  const auto found = tapByName_.find(nodeName);
  return found == tapByName_.end() ? std::nullopt : std::optional(found->second);
}

bool PlanContext::belongsIn(GlobalID stream, AudioObjectID tap) const {
  const ProcessKey* process = index_.processOf(stream);
  return isRead(tap) && canBeMoved(stream) && process != nullptr &&
         desired_.taps.at(tap).processes.contains(*process);
}

std::vector<PortPair> PlanContext::stereoPairs(const std::vector<GlobalID>& outputs,
                                               const std::vector<GlobalID>& inputs) const {
  const auto isNamed = [&](const std::vector<GlobalID>& ports) {
    return std::ranges::any_of(ports, [&](GlobalID port) { return index_.channel(port) == "FL"; });
  };
  const bool areOutputsNamed = isNamed(outputs);
  const bool areInputsNamed = isNamed(inputs);
  std::vector<PortPair> pairs;
  for (std::size_t i = 0; i < outputs.size(); ++i) {
    const std::string& from = index_.channel(outputs[i]);
    for (std::size_t j = 0; j < inputs.size(); ++j) {
      const std::string& to = index_.channel(inputs[j]);
      bool isPair = false;
      if (areOutputsNamed && areInputsNamed)
        isPair = isFrontSide(to) && (isFrontSide(from) ? from == to : true);
      else if (areInputsNamed)
        isPair = isFrontSide(to) && (outputs.size() == 1 || i % 2 == j % 2);
      else
        isPair = j == std::min(i, inputs.size() - 1);
      if (isPair) pairs.push_back({outputs[i], inputs[j]});
    }
  }
  return pairs;
}

/// The node in which a filter runs.
std::optional<GlobalID> PlanContext::nodeOf(const DesiredFilter& filter) const {
  const auto muted = mutedTapOf(desired_, filter);
  return index_.nodeNamed(muted ? desired_.taps.at(*muted).nodeName : filter.nodeName);
}

std::vector<PortPair> PlanContext::linksOf(const DesiredFilter& filter) const {
  const auto node = nodeOf(filter);
  if (!node) return {};
  std::vector<PortPair> pairs;
  const auto& inputs = index_.portsOf(*node, PortDirection::in, false);
  for (const auto tapID : filter.taps) {
    const auto tap = desired_.taps.find(tapID);
    if (tap == desired_.taps.end() || tap->second.isMuted) continue;
    for (const auto stream : streamsOf(tap->second))
      std::ranges::copy(stereoPairs(index_.portsOf(stream, PortDirection::out, false), inputs),
                        std::back_inserter(pairs));
  }
  if (const auto device = index_.nodeNamed(filter.deviceName)) {
    auto outputs = index_.portsOf(*node, PortDirection::out, false);
    const auto& channels = index_.portsOf(*device, PortDirection::in, false);
    // a filter of an unmuted tap has two channels
    if (channels.size() == 1 && outputs.size() > 1) outputs.resize(1);
    std::ranges::copy(stereoPairs(outputs, channels), std::back_inserter(pairs));
  }
  return pairs;
}

bool PlanContext::isConnected(const DesiredFilter& filter, const std::vector<PortPair>& links) const {
  const auto device = index_.nodeNamed(filter.deviceName);
  if (!device) return false;
  const bool reachesDevice = std::ranges::any_of(
      links, [&](const PortPair& pair) { return index_.graph().ports.at(pair.input).node == *device; });
  return reachesDevice && std::ranges::all_of(links, [&](const PortPair& pair) {
           const auto link = owned_.links.find(pair);
           return link != owned_.links.end() && link->second->state() == OwnObject::State::ready;
         });
}

void suitTapsToDevices(const GraphIndex& graph, DesiredState& desired) {
  for (const auto& [id, filter] : desired.filters) {
    const auto device = filter.isStopping ? std::nullopt : graph.nodeNamed(filter.deviceName);
    if (!device) continue;
    const auto& channels = graph.portsOf(*device, PortDirection::in, false);
    if (channels.empty()) continue;
    for (const auto tap : filter.taps)
      if (const auto found = desired.taps.find(tap); found != desired.taps.end())
        found->second.isMono = channels.size() == 1;
  }
}

} // namespace sonvel::pipewire
