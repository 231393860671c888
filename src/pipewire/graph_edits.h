#pragma once

#include "pipewire/desired_state.h"
#include "pipewire/stream_targets.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <set>
#include <string>

namespace sonvel::pipewire {

/// An object that this program created in the server; destroying it removes it there. Loop thread.
class OwnObject {
 public:
  enum class State {
    asked,  ///< the server has not answered yet
    ready,  ///< exists and can be used
    failed, ///< the server refused to create it
    lost,   ///< the server has removed it
  };

  OwnObject() = default;
  virtual ~OwnObject() = default;
  OwnObject(const OwnObject&) = delete;
  OwnObject& operator=(const OwnObject&) = delete;

  virtual State state() const = 0;

  /// For a node: increases with each cycle, wrapping.
  virtual std::uint32_t cycles() const { return 0; }
};

/// The node of a tap: it receives the streams, and plays what an IOProc makes of them.
class OwnTapNode : public OwnObject {
 public:
  /// Runs `block` until the result is destroyed; then the node plays silence. One at a time. The result has
  /// the state of the node and may outlive it.
  virtual std::unique_ptr<OwnObject> run(const IOProcBlock& block) = 0;
};

struct OwnTap {
  std::unique_ptr<OwnTapNode> node;
  std::string name; ///< of the node
  bool isMono = false;
};

struct OwnFilter {
  std::unique_ptr<OwnObject> object;
  std::string nodeName; ///< empty: it runs in its tap's node
};

/// What this program has created in the server, and the streams that do not follow their targets. The
/// referents outlive this.
struct OwnedObjects {
  const std::map<AudioObjectID, OwnTap>& tapNodes;
  const std::map<IOProcID, OwnFilter>& filters;
  const std::map<PortPair, std::unique_ptr<OwnObject>>& links;
  const std::set<std::uint64_t>& stranded;  ///< serials of streams that the session manager no longer links
  const std::set<std::uint64_t>& immovable; ///< serials of streams that do not move into their tap
};

/// The purpose of a link.
enum class LinkKind {
  passing, ///< carries sound that plays anyway; lets its nodes sleep
  feeding, ///< makes a stream play
  lasting, ///< makes a stream play, even after this program's end
};

/// The edits that a reconciler makes in the server's graph. Loop thread; none blocks.
class GraphEdits {
 public:
  virtual ~GraphEdits() = default;

  virtual std::unique_ptr<OwnTapNode> makeTapNode(const DesiredTap& tap) = 0;

  /// A node that reads the streams of unmuted taps.
  virtual std::unique_ptr<OwnObject> makeFilter(const DesiredFilter& filter, const IOProcBlock& block) = 0;

  /// Ready when samples flow through it as soon as its nodes run.
  virtual std::unique_ptr<OwnObject> makeLink(const PortPair& ports, LinkKind kind) = 0;

  /// Removes a link of another program.
  virtual void cutLink(GlobalID link) = 0;

  /// Writes metadata of a stream, and updates our copy of the graph at once.
  virtual void write(GlobalID stream, const MetadataWrite& write) = 0;
};

/// Tells the reconciler when to run again.
class GraphAlarm {
 public:
  using Time = std::chrono::steady_clock::time_point;

  virtual ~GraphAlarm() = default;

  virtual Time now() const = 0;

  /// Runs the reconciler after `delay`, or earlier if another call asks for that.
  virtual void lookAgainIn(std::chrono::milliseconds delay) = 0;
};

} // namespace sonvel::pipewire
