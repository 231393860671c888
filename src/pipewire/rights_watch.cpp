#include "pipewire/rights_watch.h"

#include <cstdint>

namespace sonvel::pipewire {

namespace {

using namespace std::chrono_literals;

// The server sends no notice of changed permissions.
constexpr auto kTick = 1s;

// Each check wakes an otherwise idle machine.
constexpr auto kRestingTick = 5s;

// A session manager that decides on permissions does so within this time, even just after its start. Until
// then the answer does not count.
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
  if (isAsked_) return; // one question at a time, in case the server does not answer
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
