#pragma once

#include "platform/audio_clients.h"

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace sonvel::pipewire {

/// The server's name for one of its objects. It is used again soon after the object is gone.
using GlobalID = std::uint32_t;

enum class NodeKind { other, outputStream, sink, source };

enum class PortDirection { in, out };

struct Client {
  std::uint64_t serial = 0; ///< never used again
  AudioClient facts;
  bool isKnown = false;       ///< its properties have arrived
  bool isSoundServer = false; ///< the server's own helper, or this program
  bool isSessionManager = false;
  std::int32_t vouchedPID = 0; ///< of whoever holds the socket
  bool isPulseConnection = false;
};

struct Node {
  std::uint64_t serial = 0; ///< never used again
  std::optional<GlobalID> client;
  NodeKind kind = NodeKind::other;
  std::string name;
  std::string description;
  bool isRunning = false;            ///< it takes part in the graph's cycles now
  bool cannotBeMoved = false;        ///< its properties forbid the session manager to move it
  bool isPulseAnnounced = false;     ///< PipeWire's PulseAudio server has told the program of its stream
  std::string ownTarget;             ///< the node that its program asked for: name or serial; empty for none
  std::vector<float> channelVolumes; ///< linear amplitude factors; empty while unknown
  std::optional<GlobalID> card;
  std::optional<std::int32_t> cardProfileDevice; ///< which output of the card
};

struct Port {
  GlobalID node = 0;
  PortDirection direction = PortDirection::in;
  bool isMonitor = false;
  std::string channel; ///< FL, FR, MONO …
  std::uint32_t index = 0;
};

struct Link {
  std::optional<GlobalID> client; ///< whoever made it; none for one that outlives its maker
  GlobalID outputNode = 0;
  GlobalID outputPort = 0;
  GlobalID inputNode = 0;
  GlobalID inputPort = 0;
};

/// The output of a card that is in use, which carries the volume of its nodes.
struct Route {
  std::int32_t index = 0;
  std::int32_t profileDevice = 0;
  std::vector<float> channelVolumes;
};

struct Card {
  std::vector<Route> routes;
};

/// One entry of the server's metadata.
struct MetadataValue {
  std::string type;
  std::string value;

  bool operator==(const MetadataValue&) const = default;
};

using MetadataEntries = std::map<std::string, MetadataValue>; ///< of one subject, by key

/// What the server has told us: a plain copy, which the functions that plan on it take as their only input.
struct Graph {
  std::map<GlobalID, Client> clients;
  std::map<GlobalID, Node> nodes;
  std::map<GlobalID, Port> ports;
  std::map<GlobalID, Link> links;
  std::map<GlobalID, Card> cards;
  std::map<GlobalID, MetadataEntries> metadata; ///< by subject
  bool hasMetadata = false;                     ///< the session manager is there
  bool isServerHidden = false;                  ///< the server has withdrawn itself from us
  std::string defaultSinkName;                  ///< empty for none

  /// The node with that name of the newest serial, as a name can be in two nodes while one replaces the
  /// other.
  std::optional<GlobalID> nodeNamed(const std::string& name) const;

  /// Ports of a node in one direction, in the order of their index.
  std::vector<GlobalID> portsOf(GlobalID node, PortDirection direction, bool monitors) const;

  bool isLinked(GlobalID outputPort, GlobalID inputPort) const;

  /// Whether any port of the one node feeds the other.
  bool feeds(GlobalID outputNode, GlobalID inputNode) const;

  const MetadataValue* metadataOf(GlobalID subject, const std::string& key) const;
};

} // namespace sonvel::pipewire
