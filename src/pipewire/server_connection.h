#pragma once

#include "pipewire/graph_monitor.h"
#include "pipewire/loop_thread.h"
#include "pipewire/rights_watch.h"
#include "platform/audio_server.h"

#include <atomic>
#include <functional>
#include <memory>
#include <mutex>

namespace sonvel::pipewire {

/// What is known of the server, for anyone to ask. Written by the loop thread, which also runs the callback.
class ServerState final : public AudioServer {
 public:
  /// Loop thread, as for the next.
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

/// The connection to the sound server: made again, for as long as it takes, whenever it is lost. All calls
/// with the loop's lock held.
///
/// When the server takes the right to have taps from us we disconnect, because only the server can still undo
/// what we made: it removes our objects. Some seconds later we connect again, and it decides anew.
class ServerConnection {
 public:
  struct Listener {
    std::function<void()> changed; ///< the graph has changed
    std::function<void()> lost;    ///< destroy everything that was made through core(), now
    std::function<bool()> mayRest = [] { return true; }; ///< whether nothing needs the right to have taps now
    std::function<void()> granted = [] {};               ///< taps can be had from now on
    std::function<void()> withdrawn = [] {}; ///< they can't any more, and the connection has been dropped
  };

  /// Throws std::runtime_error if the library can't be set up; a missing server is only waited for. `state`
  /// is kept up to date.
  ServerConnection(LoopThread& loop, Graph& graph, ServerState& state, Listener listener);
  ~ServerConnection();
  ServerConnection(const ServerConnection&) = delete;
  ServerConnection& operator=(const ServerConnection&) = delete;

  /// There is a server, and the graph holds all that it had when we came.
  bool isReady() const noexcept { return isReady_; }

  /// It lets us make and move what taps need.
  bool mayHaveTaps() const noexcept { return mayHaveTaps_; }

  /// Looks anew at what the server lets us do, which it does rarely while the listener may rest.
  void checkRights();

  /// Null while there is no server.
  pw_core* core() const noexcept { return core_.get(); }

  /// Null while there is no server.
  GraphMonitor* monitor() const noexcept { return monitor_.get(); }

  /// Waits until the server has dealt with all that we asked before. False if it does not answer in time, or
  /// there is none.
  bool roundTrip(const LoopThread::Lock& lock, LoopThread::Deadline deadline);

 private:
  void connect();
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
  Hook coreHook_;
  std::unique_ptr<GraphMonitor> monitor_;
  std::unique_ptr<RightsWatch> rightsWatch_;
  int lastDone_ = 0;
  int readyAt_ = 0;   ///< the sequence whose answer makes the graph complete
  int syncsLeft_ = 0; ///< before that, how many answers bring objects that must be asked in turn
  bool isReady_ = false;
  bool mayHaveTaps_ = false;
  bool isWithdrawn_ = false; ///< the connection is only there to be dropped
  bool isRefused_ = false;   ///< as above
};

} // namespace sonvel::pipewire
