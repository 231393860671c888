#include "pipewire/process_facts.h"

#include "pipewire/stream_targets.h"

#include <algorithm>

namespace sonvel::pipewire {

const AudioClient* clientOf(const GraphIndex& index, const ProcessKey& process) {
  const auto& clients = index.clientsOf(process);
  return clients.empty() ? nullptr : &index.graph().clients.at(clients.front()).facts;
}

bool isRunningOutput(const GraphIndex& index, const ProcessKey& process) {
  return std::ranges::any_of(index.streamsOf(process),
                             [&](GlobalID stream) { return index.node(stream).isRunning; });
}

std::optional<GlobalID> chosenNodeOf(const GraphIndex& index, const ProcessKey& process) {
  std::optional<GlobalID> node;
  std::uint32_t last = 0;
  for (const auto stream : index.streamsOf(process)) {
    const auto serial = index.node(stream).choiceSerial;
    if (serial > last || (last == 0 && !node)) node = chosenNodeOf(index, stream);
    last = std::max(last, serial);
  }
  return node;
}

std::uint32_t choiceSerialOf(const GraphIndex& index, const ProcessKey& process) {
  std::uint32_t last = 0;
  for (const auto stream : index.streamsOf(process))
    last = std::max(last, index.node(stream).choiceSerial);
  return last;
}

} // namespace sonvel::pipewire
