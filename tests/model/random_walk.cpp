#include "model/random_walk.h"

#include <algorithm>
#include <stdexcept>

namespace sonvel {

using simulated::Call;

namespace {

constexpr std::size_t kHistoryLength = 40;

// Building and taking down never fail at the same time: a session that can be neither built nor undone is
// left as it is, and these walks do not judge it.
constexpr std::array kBuilding{Call::createProcessTap, Call::createAggregateDevice, Call::createIOProcID,
                               Call::deviceStart};
constexpr std::array kTearingDown{Call::deviceStop, Call::destroyIOProcID, Call::destroyAggregateDevice,
                                  Call::destroyProcessTap};
constexpr std::array kReading{property::kProcessObjectList, property::kProcessIsRunningOutput,
                              property::kDefaultOutputDevice, property::kDevices};

/// What the preflight says; mostly that we may. None: it can't be asked.
constexpr std::array<std::optional<int>, 7> kPreflightCodes{0, 0, 0, 0, 1, 2, std::nullopt};

constexpr std::array kRoutes{"", "", "", "speakers", "speakers", "headset", "headset", "usb", "unknown"};

} // namespace

RandomWalk::RandomWalk() {
  audio_.addDevice({.uid = "usb", .name = "USB", .volumes = {{kElementLeft, {}}, {kElementRight, {}}}});
  // Two applications with one process, two with several that their users take for one.
  players_ = {
      {"Alpha", "com.example.alpha", {0.1F, 0.0071F}},
      {"beta", "com.example.beta", {0.0313F, 0.2F}},
      {"Gamma", "com.example.gamma", {0.0517F, 0.0119F}},
      {"Browser", "com.example.browser", {0.0737F, 0.0419F}},
      {"Browser Helper", "com.example.browser.helper", {0.0193F, 0.0631F}},
      {"Browser Helper (GPU)", "com.example.browser.helper.gpu", {0.0111F, 0.0277F}},
      {"Delta", "com.example.delta", {0.0023F, 0.0853F}},
      {"Delta Helper", "com.example.delta.helper", {0.0431F, 0.0037F}},
  };
  QObject::connect(
      model_->channels(), &ChannelList::rowsInserted, [this](const QModelIndex&, int index, int) {
        const auto* const row = model_->channels()->rows().at(static_cast<std::size_t>(index)).get();
        QObject::connect(row, &ChannelState::appChanged, [this, row] {
          if (row->active()) turnedToOthers_.insert(row);
        });
      });
}

const std::vector<RandomWalk::Action>& RandomWalk::actions() {
  static const std::vector<Action> actions{
      {"gain is set", 10, [](auto& w) { w.model_->setGain(static_cast<int>(w.pick(201)), w.anyRow()); }},
      {"mute is toggled", 6, [](auto& w) { w.model_->toggleMute(w.anyRow()); }},
      {"row is dismissed", 3, [](auto& w) { w.model_->dismissChannel(w.anyRow()); }},
      {"output is chosen", 4, [](auto& w) { w.model_->setOutput(w.anyRoute(), w.anyRow()); }},
      {"master is set", 1, [](auto& w) { w.model_->setMaster(w.pick(101) / 100.0); }},
      {"volumes are reset", 1, [](auto& w) { w.model_->resetAllVolumes(); }},
      {"everything to system", 1, [](auto& w) { w.model_->everythingToSystemOutput(); }},
      {"panel appears", 3, [](auto& w) { w.model_->onAppear(); }},
      {"panel disappears", 1, [](auto& w) { w.model_->onDisappear(); }},
      {"process starts", 8,
       [](auto& w) {
         auto& player = w.players_[w.pick(8)];
         if (player.process == kAudioObjectUnknown) w.start(player);
       }},
      {"process ends", 2,
       [](auto& w) {
         auto* const player = w.anyRunningPlayer();
         if (player == nullptr) return;
         w.audio_.removeProcess(std::exchange(player->process, kAudioObjectUnknown));
         player->isPlaying = false;
       }},
      {"process restarts", 3,
       [](auto& w) {
         auto* const player = w.anyRunningPlayer();
         if (player == nullptr) return;
         w.audio_.removeProcess(player->process);
         w.start(*player);
       }},
      {"playing changes", 5,
       [](auto& w) {
         auto* const player = w.anyRunningPlayer();
         if (player == nullptr) return;
         player->isPlaying = !player->isPlaying || w.pick(2) == 0;
         w.audio_.setPlaying(player->process, player->isPlaying);
       }},
      {"silence changes", 2,
       [](auto& w) {
         auto* const player = w.anyRunningPlayer();
         if (player == nullptr) return;
         player->isSilent = !player->isSilent;
         const auto sample = player->isSilent ? simulated::Frame{} : player->sample;
         w.audio_.setSignal(player->process, simulated::constantSignal(sample.left, sample.right));
       }},
      {"device comes or goes", 3,
       [](auto& w) {
         auto& [uid, isPresent] = *std::next(w.devices_.begin(), w.pick(3));
         if (isPresent && w.pick(3) > 0) return; // mostly they are there
         w.note(uid);
         isPresent = !isPresent;
         if (isPresent)
           (void)w.audio_.returnDevice(uid);
         else
           w.audio_.removeDevice(uid);
       }},
      {"default changes", 2,
       [](auto& w) {
         w.defaultDevice_ = w.anyRoute();
         if (w.defaultDevice_ == "unknown") w.defaultDevice_ = std::nullopt;
         w.audio_.setDefaultDevice(w.defaultDevice_);
       }},
      {"permission changes", 1, [](auto& w) { w.consent_.setPreflight(w.anyOf(kPreflightCodes)); }},
      {"permission is requested", 1,
       [](auto& w) {
         w.consent_.setRequestable(w.pick(2) == 0); // otherwise it is probed
         w.model_->requestPermission();
       }},
      {"request is answered", 2,
       [](auto& w) {
         if (w.consent_.openRequests() > 0) w.consent_.answer(w.pick(2) == 0);
       }},
      {"building fails", 2,
       [](auto& w) {
         w.audio_.clearFailures();
         w.audio_.fail({.call = w.anyOf(kBuilding), .after = w.pick(3), .times = 1 + w.pick(3)});
       }},
      {"tearing down fails", 1, [](auto& w) { w.failTearingDown(); }},
      {"reading fails", 1,
       [](auto& w) {
         w.audio_.clearFailures();
         w.audio_.fail({.selector = w.anyOf(kReading), .after = w.pick(3), .times = 1 + w.pick(3)});
       }},
      {"object is lost", 1, [](auto& w) { w.loseObject(); }},
      {"failures end", 5, [](auto& w) { w.audio_.clearFailures(); }},
      {"tick passes", 50, [](auto& w) { w.clock_.advance(kTick); }},
      {"time passes", 6, [](auto& w) { w.clock_.advance(w.pick(2) == 0 ? 2s : 5s); }},
  };
  return actions;
}

void RandomWalk::step() {
  unsigned left = 0;
  for (const auto& action : actions())
    left += action.weight;
  left = pick(left);
  for (const auto& action : actions()) {
    if (left >= action.weight) {
      left -= action.weight;
      continue;
    }
    history_.emplace_back(action.name);
    if (history_.size() > kHistoryLength) history_.pop_front();
    audio_.clearLog();
    return action.act(*this);
  }
}

std::string RandomWalk::history() const {
  std::string text;
  for (const auto& line : history_)
    text += line + "\n";
  return text;
}

ChannelState* RandomWalk::anyRow() {
  const auto& rows = model_->channels()->rows();
  if (rows.empty()) return nullptr;
  auto* const row = anyOf(rows).get();
  note(row->stableKey());
  return row;
}

std::optional<std::string> RandomWalk::anyRoute() {
  const std::string route = anyOf(kRoutes);
  note(route);
  return route.empty() ? std::nullopt : std::optional(route);
}

RandomWalk::Player* RandomWalk::anyRunningPlayer() {
  auto& player = players_[pick(static_cast<unsigned>(players_.size()))];
  note(player.name);
  return player.process != kAudioObjectUnknown ? &player : nullptr;
}

void RandomWalk::start(Player& player) {
  player.process = play(player.name, player.bundleID);
  player.isPlaying = true;
  player.isSilent = false;
  audio_.setSignal(player.process, simulated::constantSignal(player.sample.left, player.sample.right));
  note(player.name + " as " + std::to_string(player.process));
}

/// Of a session that is there now: neither the undoing of one that is being built nor a probe's is to fail.
void RandomWalk::failTearingDown() {
  audio_.clearFailures();
  const auto session = anySession();
  if (!session) return;
  const auto call = anyOf(kTearingDown);
  const auto object = call == Call::destroyProcessTap ? session->tap : session->aggregate;
  if (object != kAudioObjectUnknown) audio_.fail({.call = call, .object = object, .times = 1 + pick(3)});
}

std::optional<RandomWalk::SessionObjects> RandomWalk::anySession() {
  const auto taps = sessionTaps();
  if (taps.empty()) return std::nullopt;
  const auto& tap = anyOf(taps);
  note("of " + std::to_string(tap.description.processes.front()));
  const auto aggregates = audio_.aggregates();
  const auto aggregate = std::ranges::find(
      aggregates, tap.uid, [](const auto& other) { return other.description.taps.front().uid; });
  return SessionObjects{tap.description.processes.front(), tap.id,
                        aggregate != aggregates.end() ? aggregate->id : kAudioObjectUnknown};
}

void RandomWalk::loseObject() {
  const auto session = anySession();
  if (!session) return;
  damaged_.insert(session->process);
  try {
    if (session->aggregate != kAudioObjectUnknown && pick(2) == 0)
      audio_.loseAggregateDevice(session->aggregate);
    else
      audio_.loseTap(session->tap);
  } catch (const std::invalid_argument&) {
    note("but was given back before");
  }
}

} // namespace sonvel
