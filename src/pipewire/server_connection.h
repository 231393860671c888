#pragma once

#include "pipewire/graph_monitor.h"
#include "pipewire/loop_thread.h"
#include "pipewire/rights_watch.h"
#include "platform/audio_server.h"

#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>

namespace sonvel::pipewire {

/// The state of the server, readable from any thread. Written by the loop thread, which also runs the
/// callback.
class ServerState final : public AudioServer {
 public:
  /// Loop thread; setConnection too.
  void setRights(Rights rights) { set(rights_, rights); }

  void setConnection(Connection connection) { set(connection_, connection); }

  Rights rights() const override { return rights_; }

  Connection connection() const override { return connection_; }

  void onChange(std::function<void()> callback) override;

 private:
  template <class Value> void set(std::atomic<Value>& value, Value wanted) {
    if (value.exchange(wanted) != wanted) callBack();
  }

  void callBack();

  std::atomic<Rights> rights_ = Rights::unknown;
  std::atomic<Connection> connection_ = Connection::connecting;
  std::mutex callbackMutex_; ///< held while the callback runs
  std::function<void()> callback_;
};

/// The connection to the sound server; reconnects without limit. All calls with the loop's lock held.
///
/// Without tap rights we disconnect; the server then removes our objects, which we could no longer do. Some
/// seconds later we connect again, and the server decides anew.
class ServerConnection {
 public:
  struct Listener {
    std::function<void()> changed; ///< the graph has changed
    std::function<void()> lost;    ///< destroy everything that was created through the cores, now
    std::function<bool()> mayRest = [] { return true; }; ///< whether nothing depends on tap rights now
    std::function<void()> granted = [] {};               ///< taps can be created from now on
    std::function<void()> withdrawn = [] {}; ///< tap rights were withdrawn, and the connection is closed
  };

  /// Throws std::runtime_error if the library can't be set up; a missing server is waited for. `state` is
  /// kept up to date.
  ServerConnection(LoopThread& loop, Graph& graph, ServerState& state, Listener listener);
  ~ServerConnection();
  ServerConnection(const ServerConnection&) = delete;
  ServerConnection& operator=(const ServerConnection&) = delete;

  /// Connected, and the graph holds everything that the server had when we connected.
  bool isReady() const noexcept { return isReady_; }

  /// Whether we may create and move what taps need.
  bool mayHaveTaps() const noexcept { return mayHaveTaps_; }

  /// Checks our rights now; otherwise checks are rare while the listener's mayRest() is true.
  void checkRights();

  /// Null without a server.
  pw_core* core() const noexcept { return core_.get(); }

  /// A connection of its own for nodes in this process. While the session manager configures such a node, the
  /// server handles none of its messages before the node's connection has answered; while a connection binds
  /// the metadata, it handles none of that before the session manager has answered. On one connection the two
  /// would wait for each other without end. This one must therefore ask nothing of the session manager.
  pw_core* nodeCore() const noexcept { return nodeCore_.get(); }

  /// Null without a server.
  GraphMonitor* monitor() const noexcept { return monitor_.get(); }

  /// Waits until the server has processed all our earlier requests. False if it does not answer in time, or
  /// there is no server. After a call without an answer the next ones wait only shortly, until it answers.
  bool roundTrip(const LoopThread::Lock& lock, LoopThread::Deadline deadline);

 private:
  void connect();
  CoreHandle open(const char* name);
  void disconnect();
  void onDone(int sequence);
  void onError(std::uint32_t id, int result, const char* message);
  void onRights(bool mayHaveTaps);
  void graphChanged();
  void refused();

  LoopThread& loop_;
  Graph& graph_;
  ServerState& state_;
  Listener listener_;
  LoopEvent dropped_;
  LoopTimer retry_;
  ContextHandle context_;
  CoreHandle core_;
  CoreHandle nodeCore_;
  Hook coreHook_;
  Hook nodeCoreHook_;
  std::unique_ptr<GraphMonitor> monitor_;
  std::unique_ptr<RightsWatch> rightsWatch_;
  int lastDone_ = 0;
  std::optional<int> unanswered_; ///< the sequence number of the first round trip that took too long
  int readyAt_ = 0;               ///< the graph is complete when this sequence number is answered
  int syncsLeft_ = 0;             ///< syncs to send before that, for details of new objects
  bool isReady_ = false;
  bool mayHaveTaps_ = false;
  bool isWithdrawn_ = false; ///< the connection is to be closed
  bool isRefused_ = false;   ///< as above
};

} // namespace sonvel::pipewire
