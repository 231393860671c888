#include "pipewire/leftovers.h"

#include "pipewire/server_connection.h"
#include "pipewire/stream_targets.h"

namespace sonvel::pipewire {

bool sweepLeftovers(const std::string& tapNamePrefix, std::chrono::milliseconds patience) {
  const auto deadline = LoopThread::SteadyClock::now() + patience;
  LoopThread loop;
  Graph graph;
  loop.start();
  const LoopThread::Lock lock(loop);
  ServerState state;
  ServerConnection server(loop, graph, state, {.changed = [&] { loop.signal(); }, .lost = [] {}});
  if (!lock.waitUntil(deadline, [&] { return server.isReady() && server.mayHaveTaps(); })) return false;
  for (const auto& [id, node] : graph.nodes)
    if (targetTapOf(graph, id).starts_with(tapNamePrefix))
      for (const auto& write : writesBack(graph, id))
        server.monitor()->write(id, write);
  return server.roundTrip(lock, deadline);
}

} // namespace sonvel::pipewire
