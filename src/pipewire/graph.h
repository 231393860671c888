#pragma once

#include "platform/audio_clients.h"

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace sonvel::pipewire {

/// The server's ID of an object. It is reused soon after the object has gone.
using GlobalID = std::uint32_t;

enum class NodeKind { other, outputStream, sink, source };

enum class PortDirection { in, out };

/// One entry of the server's metadata.
struct MetadataValue {
  std::string type;
  std::string value;

  bool operator==(const MetadataValue&) const = default;
};

using MetadataEntries = std::map<std::string, MetadataValue, std::less<>>; ///< of one subject, by key

/// A write to the metadata of one subject. Without a value the key is removed.
struct MetadataWrite {
  std::string key;
  std::optional<MetadataValue> value;

  bool operator==(const MetadataWrite&) const = default;
};

struct Client {
  std::uint64_t serial = 0; ///< never reused
  AudioClient facts;
  bool isKnown = false;       ///< its properties have arrived
  bool isSoundServer = false; ///< a helper of the server, or this program
  bool isSessionManager = false;
  std::int32_t vouchedPID = 0; ///< of the process that holds the socket
  bool isPulseConnection = false;
};

struct Node {
  std::uint64_t serial = 0; ///< never reused
  std::optional<GlobalID> client;
  NodeKind kind = NodeKind::other;
  std::string name;
  std::string description;
  bool isRunning = false;         ///< takes part in the graph's cycles now
  bool isUnread = false;          ///< its properties have not arrived
  bool cannotBeMoved = false;     ///< its properties forbid moving it
  bool wasLinked = false;         ///< has been linked: its target has been restored, if one is remembered
  bool isPulseAnnounced = false;  ///< PipeWire's PulseAudio server has announced the stream to its program
  std::string ownTarget;          ///< target node requested by its program: name or serial; empty if none
  std::uint32_t choiceSerial = 0; ///< of the last choice of a target elsewhere while it was in a tap
  std::optional<MetadataWrite>
      overwritten;                   ///< another program's write of its target, lost by a later one of ours
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
  std::optional<GlobalID> client; ///< its creator; none if the object outlives its creator
  GlobalID outputNode = 0;
  GlobalID outputPort = 0;
  GlobalID inputNode = 0;
  GlobalID inputPort = 0;
};

/// A card's active output, which holds the volume of its nodes.
struct Route {
  std::int32_t index = 0;
  std::int32_t profileDevice = 0;
  std::vector<float> channelVolumes;
};

struct Card {
  std::vector<Route> routes;
};

/// What the server has reported, as plain data; the only input of the planning functions.
struct Graph {
  std::map<GlobalID, Client> clients;
  std::map<GlobalID, Node> nodes;
  std::map<GlobalID, Port> ports;
  std::map<GlobalID, Link> links;
  std::map<GlobalID, Card> cards;
  std::map<GlobalID, MetadataEntries> metadata; ///< by subject
  bool hasMetadata = false;                     ///< the session manager runs
  bool isServerHidden = false;                  ///< the server's object is hidden from us
  std::string defaultSinkName;                  ///< empty if none
  std::uint32_t lastChoiceSerial = 0;           ///< the largest of all streams so far
  std::uint64_t revision = 0; ///< increases when an object comes or goes, or a client's properties arrive

  const MetadataValue* metadataOf(GlobalID subject, std::string_view key) const;
};

} // namespace sonvel::pipewire
