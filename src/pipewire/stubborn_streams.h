#pragma once

#include "pipewire/graph_edits.h"
#include "pipewire/graph_index.h"

#include <chrono>
#include <map>
#include <optional>
#include <set>
#include <string>

namespace sonvel::pipewire {

/// Finds streams that do not follow their targets.
///
/// *Immovable* streams were sent into a tap but still play elsewhere seconds later: encoded streams, streams
/// that a policy keeps in place, and streams that another program takes back each time, or links to their
/// device itself. They are left alone. Where no other program is the reason, it may be a session manager that
/// is too busy to move them: these are tried again a few times.
///
/// *Stranded* streams have no links since a restart of the session manager, as WirePlumber 0.4 leaves them.
/// Only streams that we have moved, that existed before the restart and that nobody has linked since count: a
/// stream that the user unlinks stays unlinked.
class StubbornStreams {
 public:
  /// The session manager has restarted.
  void noteManagerRestart(const GraphIndex& graph);

  /// A stream was sent into a tap. Only what is sent into the same tap again was taken back by another
  /// program.
  void noteTaken(std::uint64_t serial, const std::string& tapName, GraphAlarm::Time now);

  /// Updates all sets. After this time it must be called again, even if the graph does not change.
  std::optional<std::chrono::milliseconds> update(const GraphIndex& graph, GraphAlarm::Time now);

  /// Forgets everything, for a new server.
  void clear() { *this = {}; }

  const std::set<std::uint64_t>& immovable() const noexcept { return immovable_; }

  /// Immovable streams, and those that are being tried again and have not come yet.
  std::set<std::uint64_t> uncontrolled() const;

  const std::set<std::uint64_t>& stranded() const noexcept { return stranded_; }

 private:
  struct Taken {
    GraphAlarm::Time windowStart;
    std::string tapName;
    int count = 0; ///< within the window, into the same tap
  };

  /// A stream that did not come in time.
  struct Late {
    std::chrono::seconds wait{0}; ///< before it is tried again
    GraphAlarm::Time retryAt;
  };

  bool findImmovable(const GraphIndex& graph, GraphAlarm::Time now);
  void noteLate(std::uint64_t serial, GraphAlarm::Time now);
  std::optional<std::chrono::milliseconds> untilRetry(GraphAlarm::Time now) const;
  bool findStranded(const GraphIndex& index, GraphAlarm::Time now);

  std::map<std::uint64_t, Taken> taken_;
  std::map<std::uint64_t, GraphAlarm::Time> elsewhereSince_;
  std::map<std::uint64_t, Late> late_; ///< immovable until retryAt, then tried again
  std::map<std::uint64_t, GraphAlarm::Time> unlinkedSince_;
  std::set<std::uint64_t> orphans_;
  std::set<std::uint64_t> immovable_;
  std::set<std::uint64_t> stranded_;
};

} // namespace sonvel::pipewire
