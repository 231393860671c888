#include "pipewire/server_connection.h"

#include "pipewire/graph_log.h"
#include "pipewire/server_quirks.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <stdexcept>
#include <utility>

namespace sonvel::pipewire {

namespace {

constexpr std::chrono::milliseconds kRetryDelay{300};

// Longer than the permission poll (5 s), so that it sees the loss even if we get our rights back at once, and
// the user can read of it for some seconds before the next reconciliation.
constexpr std::chrono::milliseconds kStaysAway{8000};

// How long to wait for a server that has not answered before.
constexpr std::chrono::milliseconds kHangingWait{100};

// The registry answers the first sync with the objects, the second with their details.
constexpr int kSyncsUntilReady = 2;

bool isAboutRights(int result) noexcept {
  return result == -EACCES || result == -EPERM;
}

} // namespace

void ServerState::onChange(std::function<void()> callback) {
  const std::lock_guard lock(callbackMutex_);
  callback_ = std::move(callback);
}

void ServerState::callBack() {
  const std::lock_guard lock(callbackMutex_);
  if (callback_) callback_();
}

ServerConnection::ServerConnection(LoopThread& loop, Graph& graph, ServerState& state, Listener listener)
    : loop_(loop)
    , graph_(graph)
    , state_(state)
    , listener_(std::move(listener))
    , dropped_(loop.loop(), [this] { disconnect(); })
    , retry_(loop.loop(), [this] { connect(); }) {
  const SignalsBlocked blocked; // the context starts the real-time thread
  pw_properties* properties = pw_properties_new(PW_KEY_CONFIG_NAME, quirks::realTimeConfiguration(), nullptr);
  context_.reset(pw_context_new(loop.loop(), properties, 0));
  if (!context_) throw std::runtime_error("the sound library could not be set up");
  connect();
}

ServerConnection::~ServerConnection() {
  rightsWatch_.reset();
  monitor_.reset();
  nodeCoreHook_.remove();
  coreHook_.remove();
}

CoreHandle ServerConnection::open(const char* name) {
  pw_properties* properties =
      pw_properties_new(PW_KEY_APP_NAME, name, PW_KEY_APP_ID, "com.quellmarsh.sonvel", PW_KEY_MEDIA_CATEGORY,
                        "Manager", PW_KEY_MEDIA_TYPE, "Audio", nullptr);
  return CoreHandle(pw_context_connect(context_.get(), properties, 0));
}

void ServerConnection::connect() {
  if (core_) return;
  core_ = open("Sonvel");
  if (core_) nodeCore_ = open("Sonvel playback");
  if (!core_ || !nodeCore_) {
    const int result = -errno;
    core_.reset();
    logRefusal("no connection to the sound server: %s", std::strerror(-result));
    if (isAboutRights(result)) state_.setRights(AudioServer::Rights::restricted);
    retry_.arm(kRetryDelay);
    return;
  }
  static const pw_core_events events = [] {
    pw_core_events made{};
    made.version = PW_VERSION_CORE_EVENTS;
    made.done = [](void* self, std::uint32_t id, int sequence) {
      if (id == PW_ID_CORE) static_cast<ServerConnection*>(self)->onDone(sequence);
    };
    made.error = [](void* self, std::uint32_t id, int, int result, const char* message) {
      static_cast<ServerConnection*>(self)->onError(id, result, message);
    };
    return made;
  }();
  static const pw_core_events nodeEvents = [] {
    pw_core_events made{};
    made.version = PW_VERSION_CORE_EVENTS;
    made.error = [](void* self, std::uint32_t id, int, int result, const char* message) {
      static_cast<ServerConnection*>(self)->onError(id, result, message);
    };
    return made;
  }();
  pw_core_add_listener(core_.get(), coreHook_.get(), &events, this);
  pw_core_add_listener(nodeCore_.get(), nodeCoreHook_.get(), &nodeEvents, this);
  monitor_ = std::make_unique<GraphMonitor>(core_.get(), graph_, [this] { graphChanged(); });
  rightsWatch_ = std::make_unique<RightsWatch>(
      loop_.loop(), core_.get(), *monitor_, [this](bool mayHaveTaps) { onRights(mayHaveTaps); },
      [this] { return mayHaveTaps_ && listener_.mayRest(); });
  syncsLeft_ = kSyncsUntilReady;
  readyAt_ = pw_core_sync(core_.get(), PW_ID_CORE, 0);
}

void ServerConnection::disconnect() {
  if (!core_) return;
  listener_.lost();
  rightsWatch_.reset();
  monitor_.reset();
  nodeCoreHook_.remove();
  nodeCore_.reset();
  coreHook_.remove();
  core_.reset();
  unanswered_.reset();
  isReady_ = false;
  mayHaveTaps_ = false;
  const bool wasWithdrawn = std::exchange(isWithdrawn_, false);
  const bool wasRefused = std::exchange(isRefused_, false);
  if (state_.connection() == AudioServer::Connection::connected)
    state_.setConnection(AudioServer::Connection::lost);
  if (wasWithdrawn) listener_.withdrawn();
  listener_.changed();
  retry_.arm(wasWithdrawn || wasRefused ? kStaysAway : kRetryDelay);
}

void ServerConnection::onDone(int sequence) {
  lastDone_ = sequence;
  if (!isReady_ && sequence == readyAt_) {
    isReady_ = --syncsLeft_ == 0;
    if (isReady_)
      state_.setConnection(AudioServer::Connection::connected);
    else
      readyAt_ = pw_core_sync(core_.get(), PW_ID_CORE, 0);
    listener_.changed();
  }
  loop_.signal();
}

void ServerConnection::onError(std::uint32_t id, int result, const char* message) {
  logRefusal("server, object %u: %s (%s)", id, message, std::strerror(-result));
  // After one of these errors nothing more arrives on the connection. The core must not be destroyed inside
  // its own event.
  constexpr std::array kLost{-EPIPE, -ECONNRESET, -EPROTO, -EBADMSG, -ENOTCONN};
  if (id == PW_ID_CORE && std::ranges::find(kLost, result) != kLost.end()) dropped_.signal();
  if (!isAboutRights(result)) return;
  if (id == PW_ID_CORE && !isReady_)
    refused();
  else
    checkRights();
}

void ServerConnection::checkRights() {
  if (rightsWatch_) rightsWatch_->ask();
}

void ServerConnection::refused() {
  state_.setRights(AudioServer::Rights::restricted);
  isRefused_ = true;
  dropped_.signal();
}

void ServerConnection::onRights(bool mayHaveTaps) {
  if (isWithdrawn_) return;
  const bool couldHaveTaps = std::exchange(mayHaveTaps_, mayHaveTaps);
  state_.setRights(mayHaveTaps ? AudioServer::Rights::granted : AudioServer::Rights::restricted);
  if (mayHaveTaps == couldHaveTaps) return;
  if (mayHaveTaps) {
    listener_.granted();
    listener_.changed();
  } else {
    isWithdrawn_ = true;
    dropped_.signal();
  }
}

void ServerConnection::graphChanged() {
  if (graph_.isServerHidden) onRights(false);
  listener_.changed();
}

bool ServerConnection::roundTrip(const LoopThread::Lock& lock, LoopThread::Deadline deadline) {
  if (!core_) return false;
  if (unanswered_ && lastDone_ - *unanswered_ >= 0) unanswered_.reset();
  if (unanswered_) deadline = std::min(deadline, LoopThread::SteadyClock::now() + kHangingWait);
  const pw_core* asked = core_.get();
  const int sequence = pw_core_sync(core_.get(), PW_ID_CORE, 0);
  const bool isOver =
      lock.waitUntil(deadline, [&] { return core_.get() != asked || lastDone_ - sequence >= 0; });
  if (!isOver && !unanswered_) unanswered_ = sequence;
  return isOver && core_.get() == asked;
}

} // namespace sonvel::pipewire
