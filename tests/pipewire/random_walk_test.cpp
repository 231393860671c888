#include "pipewire/model_server.h"

#include <gtest/gtest.h>

#include <random>

namespace sonvel::pipewire {

namespace {

/// Does whatever users, programs, devices and servers do, in any order, while edits are on their way.
class Walk {
 public:
  explicit Walk(unsigned seed)
      : random_(seed) {}

  void takeSteps(int count) {
    for (int step = 0; step < count; ++step) {
      disturb();
      for (auto turns = below(6); turns > 0; --turns) {
        if (below(3) > 0) server_.reconcile();
        if (below(3) > 0) server_.advance();
      }
    }
  }

  /// Brings back what a listener needs, and lets everything come to rest.
  void rest() {
    if (!server_.graph.hasMetadata) server_.startSessionManager();
    for (const auto* sink : {ModelServer::kSpeakers, ModelServer::kHeadphones})
      if (!server_.graph.nodeNamed(sink)) server_.addSink(sink);
    server_.settle();
  }

  void expectEveryoneIsHeardWhereTheyBelong() const {
    EXPECT_EQ(server_.plan(), Plan{});
    for (const auto stream : server_.streams()) {
      if (server_.graph.nodes.at(stream).cannotBeMoved) continue;
      const std::string place = placeOf(stream);
      const auto heard = server_.heardAt(stream);
      EXPECT_TRUE(heard.contains(place)) << "stream " << stream << " not at " << place;
      const bool isAlone = heard.size() == 1;
      EXPECT_TRUE(isAlone || !place.starts_with("tap:")) << "stream " << stream << " past its tap, too";
    }
    std::set<AudioObjectID> nodes;
    for (const auto& [id, tap] : server_.desired.taps)
      if (tap.hasNode) nodes.insert(id);
    EXPECT_EQ(server_.owned.tapNodes, nodes);
    EXPECT_EQ(server_.owned.filters.size(), server_.desired.sessions.size());
    EXPECT_EQ(server_.owned.links.size(), linksNeeded());
  }

 private:
  unsigned below(unsigned limit) { return static_cast<unsigned>(random_() % limit); }

  template <class Container> auto anyOf(const Container& container) {
    return std::next(container.begin(), below(static_cast<unsigned>(container.size())));
  }

  std::string anySink() { return below(2) == 0 ? ModelServer::kSpeakers : ModelServer::kHeadphones; }

  void disturb() {
    switch (below(10)) {
    case 0:
    case 1:
      changeStreams();
      break;
    case 2:
    case 3:
      changeSessions();
      break;
    case 4:
      changeSinks();
      break;
    case 5:
      loseSomething();
      break;
    case 6:
      restartSomething();
      break;
    default:
      changeTargets();
      break;
    }
  }

  void changeStreams() {
    const auto streams = server_.streams();
    if (streams.size() > 5 || (!streams.empty() && below(3) == 0))
      server_.removeNode(*anyOf(streams));
    else
      server_.addStream(1 + static_cast<std::int32_t>(below(3)),
                        below(4) == 0 ? kMonoChannels : kStereoChannels, below(6) == 0);
  }

  /// One tap and one session for a process, as long as none is there.
  void changeSessions() {
    const auto pid = static_cast<std::int32_t>(1 + below(3));
    const auto running = sessions_.find(pid);
    if (running == sessions_.end()) {
      const AudioObjectID tap = server_.wantTap(pid, below(4) > 0);
      sessions_[pid] = {tap, server_.wantSession({tap}, anySink())};
    } else if (!server_.desired.sessions.contains(running->second.session)) { // it has stopped
      server_.dropTap(running->second.tap);
      sessions_.erase(running);
    } else {
      server_.wantStop(running->second.session);
    }
  }

  void changeSinks() {
    const std::string sink = anySink();
    if (server_.graph.nodeNamed(sink))
      server_.removeNode(sink);
    else
      server_.addSink(sink);
  }

  void loseSomething() {
    if (!server_.graph.links.empty() && below(2) == 0) {
      server_.removeLink(anyOf(server_.graph.links)->first);
    } else if (!server_.owned.tapNodes.empty() && below(2) == 0) {
      server_.loseTapNode(*anyOf(server_.owned.tapNodes));
    } else if (!server_.owned.filters.empty()) {
      server_.loseFilter(*anyOf(server_.owned.filters));
    }
  }

  void restartSomething() {
    if (below(4) == 0)
      server_.restart();
    else if (server_.graph.hasMetadata)
      server_.stopSessionManager();
    else
      server_.startSessionManager();
  }

  void changeTargets() {
    const auto streams = server_.streams();
    if (streams.empty() || !server_.graph.hasMetadata) return;
    const GlobalID stream = *anyOf(streams);
    if (server_.graph.nodes.at(stream).cannotBeMoved) return;
    const auto choice = below(4);
    if (choice == 0 && !server_.desired.taps.empty())
      server_.moveStream(stream, anyOf(server_.desired.taps)->second.nodeName);
    else if (choice == 1)
      server_.moveStream(stream, std::string(kTapNamePrefix) + "of-a-killed-run");
    else if (choice == 2 && server_.graph.nodeNamed(ModelServer::kSpeakers))
      server_.addForeignLink(stream, ModelServer::kSpeakers);
    else
      server_.moveStream(stream, anySink());
  }

  /// Where a stream is to be heard in the end, out of what its user and its session want.
  std::string placeOf(GlobalID stream) const {
    const MetadataValue* target = server_.graph.metadataOf(stream, "target.object");
    const bool hasOwnPlace = target != nullptr && target->value != "-1"; // that is: follow the default
    std::string ownPlace = hasOwnPlace ? target->value : ModelServer::kSpeakers;
    const auto pid = server_.graph.clients.at(*server_.graph.nodes.at(stream).client).facts.processID;
    const auto running = sessions_.find(pid);
    if (running == sessions_.end() || !server_.desired.sessions.contains(running->second.session) ||
        !server_.desired.taps.at(running->second.tap).isMuted)
      return ownPlace;
    const std::string& tap = server_.tapName(running->second.tap);
    const auto captured = server_.owned.captured.find(tap);
    const bool wasCaptured = captured != server_.owned.captured.end() &&
                             captured->second.contains(server_.graph.nodes.at(stream).serial);
    if (wasCaptured && ownPlace != tap) return ownPlace; // its user moved it out
    return "tap:" + server_.desired.sessions.at(running->second.session).deviceName;
  }

  /// Two from each filter to its device; into it two from a tap's node or from each stream of an unmuted tap.
  std::size_t linksNeeded() const {
    std::size_t count = 0;
    for (const auto& [id, session] : server_.desired.sessions) {
      const DesiredTap& tap = server_.desired.taps.at(*session.taps.begin());
      count += tap.isMuted ? 4 : 2;
      for (const auto stream : server_.streams())
        if (!tap.isMuted &&
            tap.processes.contains(processKeyOfStream(server_.graph, server_.graph.nodes.at(stream)).value()))
          count += 2;
    }
    return count;
  }

  struct Running {
    AudioObjectID tap = 0;
    IOProcID session = 0;
  };

  std::mt19937 random_;
  ModelServer server_;
  std::map<std::int32_t, Running> sessions_;
};

} // namespace

TEST(RandomWalk, ComesToRestInTheDesiredState) {
  for (unsigned seed = 1; seed <= 100 && !testing::Test::HasFailure(); ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    Walk walk(seed);
    for (int round = 0; round < 4; ++round) {
      walk.takeSteps(25);
      walk.rest();
      walk.expectEveryoneIsHeardWhereTheyBelong();
    }
  }
}

} // namespace sonvel::pipewire
