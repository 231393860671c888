#pragma once

#include "pipewire/handles.h"
#include "pipewire/loop_thread.h"
#include "pipewire/metadata_mirror.h"

#include <pipewire/extensions/metadata.h>

#include <cstdint>
#include <functional>
#include <memory>

namespace sonvel::pipewire {

/// Reads the whole metadata again after changes may have been missed: from when a program binds the metadata
/// until the session manager has answered, the server reports changes to that program alone. That holds for
/// this reading too, so it waits for a moment when nothing happens. Loop thread.
class MetadataReader {
 public:
  /// `finished` runs after each reading has been given to the mirror.
  MetadataReader(pw_loop* loop, pw_registry* registry, GlobalID metadata, const Graph& graph,
                 MetadataMirror& mirror, std::function<void()> finished);
  ~MetadataReader();
  MetadataReader(const MetadataReader&) = delete;
  MetadataReader& operator=(const MetadataReader&) = delete;

  /// Reads it when a program that connects now has bound it, and the graph has not changed for a while: in
  /// half a second at the earliest, two and a half seconds at the latest. Repeated calls do not delay it.
  void readSoon();

  /// The subject is gone: what is being read of it must not become that of another object with its ID.
  void forget(GlobalID subject);

 private:
  class Reading;

  void waitForQuiet();
  void start();
  void take();

  pw_registry* registry_;
  GlobalID metadata_;
  const Graph& graph_;
  MetadataMirror& mirror_;
  std::function<void()> finished_;
  LoopTimer delay_;
  LoopEvent complete_;         ///< a proxy must not be destroyed in its own event
  std::uint64_t revision_ = 0; ///< of the graph, when the delay began
  int waits_ = 0;
  bool isWanted_ = false;
  bool isWantedAgain_ = false;
  std::unique_ptr<Reading> reading_;
};

} // namespace sonvel::pipewire
