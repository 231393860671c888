#include "pipewire/fake_server.h"

#include <gtest/gtest.h>

#include <random>

namespace sonvel::pipewire {

namespace {

/// Random actions of users, programs, devices and servers while edits are pending.
class Walk {
 public:
  explicit Walk(unsigned seed)
      : random_(seed) {}

  /// Takes steps, restores what listening needs, and lets everything settle.
  void goAndRest() {
    for (int step = 0; step < 25; ++step) {
      disturb();
      for (auto turns = below(6); turns > 0; --turns)
        server_.advance();
    }
    for (const auto* sink : {FakeServer::kSpeakers, FakeServer::kHeadphones})
      if (!server_.nodeNamed(sink)) server_.addSink(sink);
    EXPECT_TRUE(server_.settle());
  }

  void expectEveryoneIsHeardWhereTheyBelong() {
    EXPECT_EQ(server_.countOwnNodes(), server_.reconciler.desired().filters.size());
    for (const auto stream : server_.streams()) {
      if (server_.graph.nodes.at(stream).cannotBeMoved) continue;
      EXPECT_TRUE(server_.heardAt(stream) == std::set{placeOf(stream)})
          << "stream " << stream << " not at " << placeOf(stream) << " alone";
    }
  }

 private:
  unsigned below(unsigned limit) { return static_cast<unsigned>(random_() % limit); }

  template <class Container> auto anyOf(const Container& container) {
    return std::next(container.begin(), below(static_cast<unsigned>(container.size())));
  }

  std::string anySink() { return below(2) == 0 ? FakeServer::kSpeakers : FakeServer::kHeadphones; }

  void disturb() {
    const auto what = below(9);
    if (what < 2) return changeStreams();
    if (what < 4) return changeFilters();
    if (what == 4) return changeSinks();
    if (what == 5) return loseSomething();
    moveSomething();
  }

  void changeStreams() {
    const auto streams = server_.streams();
    if (streams.size() > 5 || (!streams.empty() && below(3) == 0))
      server_.removeNode(*anyOf(streams));
    else if (const auto stream = server_.addStream(1 + static_cast<std::int32_t>(below(3))); below(6) == 0)
      server_.graph.nodes.at(stream).cannotBeMoved = true;
  }

  /// One filter per process; a running one is stopped or replaced within a configuration.
  void changeFilters() {
    const auto pid = static_cast<std::int32_t>(1 + below(3));
    auto& desired = server_.reconciler.desired();
    const auto running = filters_.find(pid);
    if (running != filters_.end()) {
      desired.filters.at(running->second).isStopping = true;
      filters_.erase(running);
      if (below(2) == 0) return;
    }
    filters_[pid] = server_.wantFilter(server_.wantTap(pid, below(4) > 0), anySink());
  }

  void changeSinks() {
    const std::string sink = anySink();
    if (const auto node = server_.nodeNamed(sink))
      server_.removeNode(*node);
    else
      server_.addSink(sink);
  }

  /// Removes a link or one of our nodes.
  void loseSomething() {
    if (below(2) == 0 && !server_.graph.links.empty()) {
      server_.removeLink(anyOf(server_.graph.links)->first);
      return;
    }
    const auto nodes = server_.graph.nodes;
    for (const auto& [id, node] : nodes)
      if (node.name.starts_with("sonvel") && below(3) == 0) return server_.removeNode(id);
  }

  void moveSomething() {
    const auto streams = server_.streams();
    if (streams.empty()) return;
    const GlobalID stream = *anyOf(streams);
    if (server_.graph.nodes.at(stream).cannotBeMoved) return;
    const auto& taps = server_.reconciler.desired().taps;
    const auto choice = below(4);
    if (choice == 0 && !taps.empty())
      server_.moveStream(stream, anyOf(taps)->second.nodeName);
    else if (choice == 1)
      server_.moveStream(stream, std::string(kTapNamePrefix) + "of-a-killed-run");
    else
      server_.moveStream(stream, anySink());
  }

  /// Where a stream must be heard in the end, according to its user and its tap.
  std::string placeOf(GlobalID stream) {
    const auto pid = server_.graph.clients.at(*server_.graph.nodes.at(stream).client).facts.processID;
    const auto running = filters_.find(pid);
    if (running != filters_.end()) {
      const DesiredFilter& filter = server_.filter(running->second);
      if (server_.reconciler.desired().taps.at(*filter.taps.begin()).isMuted)
        return "tap:" + filter.deviceName;
    }
    return server_.graph.nodes.at(usersTargetOf(GraphIndex(server_.graph), stream).value()).name;
  }

  std::mt19937 random_;
  FakeServer server_;
  std::map<std::int32_t, IOProcID> filters_;
};

} // namespace

TEST(RandomWalk, ComesToRestInTheDesiredState) {
  for (unsigned seed = 1; seed <= 100 && !testing::Test::HasFailure(); ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    Walk walk(seed);
    for (int round = 0; round < 4; ++round) {
      walk.goAndRest();
      walk.expectEveryoneIsHeardWhereTheyBelong();
    }
  }
}

} // namespace sonvel::pipewire
