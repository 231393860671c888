#include "session/access_manager.h"

#include <algorithm>
#include <chrono>
#include <stdexcept>

namespace sonvel::session {

namespace {

constexpr std::uint32_t kServer = 0;

GraphConnection::Deadline deadline() {
  return std::chrono::steady_clock::now() + std::chrono::seconds{20};
}

std::uint32_t objectOf(AccessTo what, const Graph& graph) {
  if (what == AccessTo::everything) return kEveryObject;
  if (what == AccessTo::server) return kServer;
  return std::ranges::find_if(
             graph.objects,
             [](const GraphObject& object) { return object.property("metadata.name") == "default"; })
      ->id;
}

} // namespace

void AccessManager::let(AccessTo what, std::uint32_t mask) {
  const Graph graph = connection_.snapshot(deadline());
  const auto ours = std::ranges::find_if(graph.objects, [](const GraphObject& candidate) {
    return candidate.type == "Client" && candidate.property("application.name") == "Sonvel";
  });
  if (ours == graph.objects.end()) throw std::runtime_error("Sonvel is not connected");
  connection_.setPermissions(ours->id, objectOf(what, graph), mask);
  static_cast<void>(connection_.snapshot(deadline()));
}

void AccessManager::route(std::uint32_t stream, const std::string& sink) {
  const Graph graph = connection_.snapshot(deadline());
  connection_.setMetadata("default", stream, "target.object", "Spa:Id",
                          std::string(graph.node(sink)->property("object.serial")));
  static_cast<void>(connection_.snapshot(deadline()));
}

} // namespace sonvel::session
