#pragma once

#include "pipewire/graph_edits.h"

#include <map>
#include <set>

namespace sonvel::pipewire {

/// Finds the streams that do not do what the metadata tells them to.
///
/// *Immovable* are streams that were sent into a tap and play elsewhere seconds later: encoded ones, those
/// that a policy holds where they are, and those that another program takes back each time. They are left
/// alone.
///
/// *Stranded* are streams that nobody links any more after the session manager was started again, as
/// WirePlumber 0.4 leaves them. Only streams that we have moved, that were there before its restart and that
/// nobody has linked since count: what a user unlinks stays so.
class StubbornStreams {
 public:
  /// The session manager is back after it was away.
  void noteManagerRestart(const Graph& graph);

  /// A stream was sent into a tap.
  void noteTaken(std::uint64_t serial, GraphAlarm::Time now);

  /// Brings both sets up to date. True if it has to look again soon.
  bool update(const Graph& graph, GraphAlarm::Time now);

  /// Forgets everything: the server is another.
  void clear() { *this = {}; }

  const std::set<std::uint64_t>& immovable() const noexcept { return immovable_; }

  const std::set<std::uint64_t>& stranded() const noexcept { return stranded_; }

 private:
  struct Taken {
    GraphAlarm::Time windowStart;
    int count = 0; ///< within the window
  };

  bool findImmovable(const Graph& graph, GraphAlarm::Time now);
  bool findStranded(const Graph& graph, GraphAlarm::Time now);

  std::map<std::uint64_t, Taken> taken_;
  std::map<std::uint64_t, GraphAlarm::Time> elsewhereSince_;
  std::map<std::uint64_t, GraphAlarm::Time> unlinkedSince_;
  std::set<std::uint64_t> orphans_;
  std::set<std::uint64_t> immovable_;
  std::set<std::uint64_t> stranded_;
};

} // namespace sonvel::pipewire
