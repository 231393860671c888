#pragma once

#include "pipewire/desired_state.h"
#include "pipewire/stream_targets.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>

namespace sonvel::pipewire {

/// An object that this program made in the server, which vanishes with it. Belongs to the loop thread.
class OwnObject {
 public:
  enum class State {
    asked,  ///< the server has not answered yet
    ready,  ///< it is there and can be used
    failed, ///< the server would not make it
    lost,   ///< the server has removed it
  };

  OwnObject() = default;
  virtual ~OwnObject() = default;
  OwnObject(const OwnObject&) = delete;
  OwnObject& operator=(const OwnObject&) = delete;

  virtual State state() const = 0;

  /// Of a filter: grows with each cycle, wrapping.
  virtual std::uint32_t cycles() const { return 0; }
};

/// What a link is for.
enum class LinkKind {
  passing, ///< hands on what plays anyway: it does not keep its nodes from sleeping
  feeding, ///< lets a stream play
  lasting, ///< lets a stream play, also when this program has ended
};

/// The edits that a reconciler makes in the server's graph. Calls come on the loop thread, none waits.
class GraphEdits {
 public:
  virtual ~GraphEdits() = default;

  virtual std::unique_ptr<OwnObject> makeTapNode(const DesiredTap& tap) = 0;
  virtual std::unique_ptr<OwnObject> makeFilter(const DesiredSession& session, const IOProcBlock& block) = 0;

  /// Ready when samples flow through it as soon as its nodes run.
  virtual std::unique_ptr<OwnObject> makeLink(const PortPair& ports, LinkKind kind) = 0;

  /// Removes a link that someone else made.
  virtual void cutLink(GlobalID link) = 0;

  /// Writes metadata on a stream, and into the graph at once.
  virtual void write(GlobalID stream, const MetadataWrite& write) = 0;
};

/// When a reconciler wants to look again.
class GraphAlarm {
 public:
  using Time = std::chrono::steady_clock::time_point;

  virtual ~GraphAlarm() = default;

  virtual Time now() const = 0;

  /// Has the reconciler look again after `delay`, or earlier if something else asked for that.
  virtual void lookAgainIn(std::chrono::milliseconds delay) = 0;
};

} // namespace sonvel::pipewire
