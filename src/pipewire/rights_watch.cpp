#include "pipewire/rights_watch.h"

#include <cstdint>

namespace sonvel::pipewire {

namespace {

using namespace std::chrono_literals;

// The server does not say of its own accord that permissions have changed.
constexpr auto kTick = 1s;

// Each question wakes a machine that may have nothing else to do.
constexpr auto kRestingTick = 5s;

// Where the session manager decides who may do what, it does so within this time, also when it has just been
// started. Until then the server answers nothing.
constexpr auto kDecisionTakes = 3s;

} // namespace

RightsWatch::RightsWatch(pw_loop* loop, pw_core* core, const GraphMonitor& monitor,
                         std::function<void(bool)> onAnswer, std::function<bool()> mayRest)
    : monitor_(monitor)
    , onAnswer_(std::move(onAnswer))
    , mayRest_(std::move(mayRest))
    , client_(pw_core_get_client(core))
    , tick_(loop, [this] { tick(); }) {
  static const pw_client_events events = [] {
    pw_client_events made{};
    made.version = PW_VERSION_CLIENT_EVENTS;
    made.info = [](void* self, const pw_client_info* info) { static_cast<RightsWatch*>(self)->onInfo(info); };
    made.permissions = [](void* self, std::uint32_t, std::uint32_t count, const pw_permission* list) {
      static_cast<RightsWatch*>(self)->onPermissions({list, count});
    };
    return made;
  }();
  pw_client_add_listener(client_, hook_.get(), &events, this);
  ask();
}

void RightsWatch::ask() {
  send();
  tick_.arm(kTick);
}

void RightsWatch::send() {
  if (isAsked_) return; // what a server that does not answer is asked would pile up
  isAsked_ = true;
  pw_client_get_permissions(client_, 0, UINT32_MAX);
}

void RightsWatch::tick() {
  if (!isAnswered_ && waitsUntil_ && LoopThread::SteadyClock::now() >= *waitsUntil_) onAnswer_(false);
  send();
  tick_.arm(mayRest_() ? kRestingTick : kTick);
}

void RightsWatch::onPermissions(std::span<const pw_permission> list) {
  isAsked_ = false;
  isAnswered_ = true;
  onAnswer_(allowTaps(permissionsFrom(list), monitor_.metadataID()));
}

void RightsWatch::onInfo(const pw_client_info* info) {
  if (waitsUntil_ || info->props == nullptr || spa_dict_lookup(info->props, PW_KEY_ACCESS) == nullptr) return;
  waitsUntil_ = LoopThread::SteadyClock::now() + kDecisionTakes;
}

} // namespace sonvel::pipewire
