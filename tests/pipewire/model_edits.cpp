// How the model carries out a plan.
#include "pipewire/model_server.h"
#include "pipewire/stream_targets.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace sonvel::pipewire {

bool ModelServer::reconcile() {
  const Plan missing = plan();
  const bool isEmpty = missing == Plan{};
  expectNothingIsHeardOf(missing);
  apply(missing);
  finishStops();
  return !isEmpty;
}

bool ModelServer::isReadByOthers(AudioObjectID tap, IOProcID session) const {
  return std::ranges::any_of(desired.sessions, [&](const auto& other) {
    return other.first != session && !other.second.isStopping && other.second.taps.contains(tap);
  });
}

/// What someone who listens would notice of these edits.
void ModelServer::expectNothingIsHeardOf(const Plan& plan) const {
  for (const auto& routing : plan.routings)
    EXPECT_TRUE(routing.tapName.empty() || reachesASink(routing.tapName))
        << "a stream is sent into a tap that no one hears";
  for (const auto tap : plan.tapNodesToDestroy) {
    const auto wanted = desired.taps.find(tap);
    const auto node = wanted == desired.taps.end() ? std::nullopt : graph.nodeNamed(wanted->second.nodeName);
    if (!node || graph.defaultSinkName.empty()) continue; // then nobody has anywhere else to play
    for (const auto stream : streams())
      EXPECT_FALSE(graph.feeds(stream, *node)) << "a tap's node goes while a stream plays into it";
  }
  for (const auto session : plan.filtersToDestroy)
    for (const auto tap : desired.sessions.at(session).taps)
      EXPECT_TRUE(!owned.tapNodes.contains(tap) || isReadByOthers(tap, session))
          << "a filter goes before the node of its tap";
  for (const auto& pair : plan.linksToCreate) {
    EXPECT_EQ(graph.ports.at(pair.output).direction, PortDirection::out);
    EXPECT_EQ(graph.ports.at(pair.input).direction, PortDirection::in);
  }
  for (const auto link : plan.foreignLinksToCut)
    EXPECT_TRUE(graph.links.contains(link));
}

/// Does at once what the reconciler does at once, and leaves to the server what only that can do.
void ModelServer::apply(const Plan& plan) {
  for (const auto tap : plan.tapNodesToDestroy) {
    owned.tapNodes.erase(tap);
    const std::string name = tapNodeNames_.at(tap);
    const auto node = graph.nodeNamed(name);
    const auto serial = node ? graph.nodes.at(*node).serial : 0;
    later([this, name, serial] {
      if (const auto found = graph.nodeNamed(name); found && graph.nodes.at(*found).serial == serial)
        removeNode(*found);
    });
  }
  for (const auto session : plan.filtersToDestroy) {
    owned.filters.erase(session);
    later([this, session] { removeNode("sonvel-aggregate-" + std::to_string(session)); });
  }
  for (const auto tap : plan.tapNodesToCreate)
    createTapNode(tap);
  for (const auto session : plan.filtersToCreate)
    createFilter(session);
  for (const auto& pair : plan.linksToDestroy)
    destroyLink(pair);
  for (const auto& pair : plan.linksToCreate)
    createLink(pair);
  for (const auto link : plan.foreignLinksToCut)
    later([this, link, serial = serials_.at(link)] {
      if (graph.links.contains(link) && serials_.at(link) == serial) removeLink(link);
    });
  if (graph.hasMetadata)
    for (const auto& routing : plan.routings)
      route(routing);
}

void ModelServer::createTapNode(AudioObjectID tap) {
  owned.tapNodes.insert(tap);
  tapNodeNames_[tap] = desired.taps.at(tap).nodeName;
  later([this, tap] {
    if (!owned.tapNodes.contains(tap)) return;
    Node node;
    node.name = tapNodeNames_.at(tap);
    const GlobalID id = addNode(node);
    const auto serial = graph.nodes.at(id).serial;
    later([this, id, serial] {
      if (!graph.nodes.contains(id) || graph.nodes.at(id).serial != serial) return;
      addPorts(id, PortDirection::in, kStereoChannels, false);
      addPorts(id, PortDirection::out, kStereoChannels, true);
    });
  });
}

void ModelServer::createFilter(IOProcID session) {
  owned.filters.insert(session);
  later([this, session] {
    if (!owned.filters.contains(session)) return;
    Node node;
    node.name = desired.sessions.at(session).filterName;
    const GlobalID id = addNode(node);
    const auto serial = graph.nodes.at(id).serial;
    later([this, id, serial] {
      if (!graph.nodes.contains(id) || graph.nodes.at(id).serial != serial) return;
      addPorts(id, PortDirection::in, kStereoChannels, false);
      addPorts(id, PortDirection::out, kStereoChannels, false);
    });
  });
}

void ModelServer::loseTapNode(AudioObjectID tap) {
  owned.tapNodes.erase(tap);
  removeNode(tapNodeNames_.at(tap));
}

void ModelServer::loseFilter(IOProcID session) {
  owned.filters.erase(session);
  removeNode(desired.sessions.at(session).filterName);
}

void ModelServer::createLink(const PortPair& pair) {
  owned.links[pair] = false;
  const auto serial = ownLinks_[pair] = ++lastSerial_;
  const GlobalID outputNode = graph.ports.at(pair.output).node;
  const GlobalID inputNode = graph.ports.at(pair.input).node;
  const auto isWanted = [this, pair, serial] {
    const auto own = ownLinks_.find(pair);
    return own != ownLinks_.end() && own->second == serial;
  };
  later([this, pair, serial, outputNode, inputNode, isWanted] {
    if (!isWanted()) return;
    const auto output = graph.ports.find(pair.output);
    const auto input = graph.ports.find(pair.input);
    if (output == graph.ports.end() || input == graph.ports.end() || output->second.node != outputNode ||
        input->second.node != inputNode) { // refused; forgotten when it is tried again
      owned.links.erase(pair);
      ownLinks_.erase(pair);
      return;
    }
    const GlobalID id = freeID();
    graph.links[id] = {outputNode, pair.output, inputNode, pair.input};
    serials_[id] = serial;
    later([this, pair, isWanted] {
      if (isWanted()) owned.links[pair] = true; // negotiated
    });
  });
}

void ModelServer::destroyLink(const PortPair& pair) {
  owned.links.erase(pair);
  const auto own = ownLinks_.find(pair);
  if (own == ownLinks_.end()) return;
  const auto serial = own->second;
  ownLinks_.erase(own);
  later([this, serial] {
    const auto links = graph.links;
    for (const auto& [id, link] : links)
      if (serials_.at(id) == serial) removeLink(id);
  });
}

void ModelServer::route(const StreamRouting& routing) {
  const auto writes = routing.tapName.empty() ? writesBack(graph, routing.stream)
                                              : writesInto(graph, routing.stream, routing.tapName);
  for (const auto& write : writes)
    if (write.value)
      graph.metadata[routing.stream][write.key] = *write.value;
    else
      graph.metadata[routing.stream].erase(write.key);
  const auto serial = graph.nodes.at(routing.stream).serial;
  for (auto& [tapName, captured] : owned.captured)
    captured.erase(serial);
  if (!routing.tapName.empty()) owned.captured[routing.tapName].insert(serial);
  manage();
}

} // namespace sonvel::pipewire
