#include "model/random_walk.h"

#include <algorithm>
#include <stdexcept>

namespace sonvel {

using simulated::Call;

namespace {

constexpr std::size_t kHistoryLength = 40;

/// What the preflight says; mostly that we may.
constexpr std::array kPreflightCodes{0, 0, 0, 0, 1, 2};

const char* name(auto event) {
  constexpr std::array names{
      "gain is set",      "mute is toggled",   "row is dismissed",     "output is chosen",
      "master is set",    "volumes are reset", "everything to system", "process starts",
      "process ends",     "process restarts",  "playing changes",      "silence changes",
      "device changes",   "default changes",   "permission changes",   "permission is requested",
      "request answered", "building fails",    "tearing down fails",   "reading fails",
      "object is lost",   "failures end",      "tick passes",          "time passes",
      "panel appears",    "panel disappears",
  };
  return names.at(static_cast<std::size_t>(event));
}

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

void RandomWalk::step() {
  struct Weight {
    Event event;
    unsigned weight;
  };

  using enum Event;
  static constexpr std::array weights{
      Weight{gainIsSet, 10},
      Weight{muteIsToggled, 6},
      Weight{rowIsDismissed, 3},
      Weight{outputIsChosen, 4},
      Weight{masterIsSet, 1},
      Weight{volumesAreReset, 1},
      Weight{everythingGoesToSystemOutput, 1},
      Weight{processStarts, 8},
      Weight{processEnds, 2},
      Weight{processRestarts, 3},
      Weight{playingChanges, 5},
      Weight{silenceChanges, 2},
      Weight{deviceComesOrGoes, 3},
      Weight{defaultDeviceChanges, 2},
      Weight{permissionChanges, 1},
      Weight{permissionIsRequested, 1},
      Weight{requestIsAnswered, 2},
      Weight{buildingFails, 2},
      Weight{tearingDownFails, 1},
      Weight{readingFails, 1},
      Weight{objectIsLost, 1},
      Weight{failuresEnd, 5},
      Weight{tickPasses, 50},
      Weight{timePasses, 6},
      Weight{panelAppears, 3},
      Weight{panelDisappears, 1},
  };
  static const auto total = [] {
    unsigned sum = 0;
    for (const auto& weight : weights)
      sum += weight.weight;
    return sum;
  }();
  auto left = pick(total);
  for (const auto& [event, weight] : weights) {
    if (left < weight) return happen(event);
    left -= weight;
  }
}

void RandomWalk::happen(Event event) {
  history_.emplace_back(name(event));
  if (history_.size() > kHistoryLength) history_.pop_front();
  audio_.clearLog();
  if (event <= Event::everythingGoesToSystemOutput) return userDoes(event);
  if (event <= Event::silenceChanges) return playersDo(event);
  if (event <= Event::defaultDeviceChanges) return machineDoes(event);
  if (event <= Event::requestIsAnswered) return permissionDoes(event);
  if (event <= Event::failuresEnd) return hardwareFails(event);
  switch (event) {
  case Event::tickPasses:
    return clock_.advance(kTick);
  case Event::timePasses:
    return clock_.advance(pick(2) == 0 ? 2s : 5s);
  case Event::panelAppears:
    return model_->onAppear();
  default:
    return model_->onDisappear();
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
  auto* const row = rows[pick(static_cast<unsigned>(rows.size()))].get();
  history_.back() += " of " + row->stableKey();
  return row;
}

std::optional<std::string> RandomWalk::anyRoute() {
  constexpr std::array routes{"", "", "", "speakers", "speakers", "headset", "headset", "usb", "unknown"};
  const std::string route = routes.at(pick(routes.size()));
  history_.back() += " to " + route;
  return route.empty() ? std::nullopt : std::optional(route);
}

void RandomWalk::userDoes(Event event) {
  switch (event) {
  case Event::gainIsSet: {
    const auto percent = static_cast<int>(pick(201));
    history_.back() += " " + std::to_string(percent);
    return model_->setGain(percent, anyRow());
  }
  case Event::muteIsToggled:
    return model_->toggleMute(anyRow());
  case Event::rowIsDismissed:
    return model_->dismissChannel(anyRow());
  case Event::outputIsChosen: {
    const auto route = anyRoute();
    return model_->setOutput(route, anyRow());
  }
  case Event::masterIsSet:
    return model_->setMaster(static_cast<double>(pick(101)) / 100.0);
  case Event::volumesAreReset:
    return model_->resetAllVolumes();
  default:
    return model_->everythingToSystemOutput();
  }
}

void RandomWalk::start(Player& player) {
  player.process = play(player.name, player.bundleID);
  player.isPlaying = true;
  player.isSilent = false;
  audio_.setSignal(player.process, simulated::constantSignal(player.sample.left, player.sample.right));
  history_.back() += " as " + std::to_string(player.process);
}

void RandomWalk::playersDo(Event event) {
  auto& player = players_[pick(static_cast<unsigned>(players_.size()))];
  history_.back() += ": " + player.name;
  const bool runs = player.process != kAudioObjectUnknown;
  if (event == Event::processStarts) {
    if (!runs) start(player);
    return;
  }
  if (!runs) return;
  switch (event) {
  case Event::processEnds:
    audio_.removeProcess(player.process);
    player.process = kAudioObjectUnknown;
    player.isPlaying = false;
    return;
  case Event::processRestarts:
    audio_.removeProcess(player.process);
    return start(player);
  case Event::playingChanges:
    player.isPlaying = !player.isPlaying || pick(2) == 0;
    return audio_.setPlaying(player.process, player.isPlaying);
  default: {
    player.isSilent = !player.isSilent;
    const auto sample = player.isSilent ? simulated::Frame{} : player.sample;
    return audio_.setSignal(player.process, simulated::constantSignal(sample.left, sample.right));
  }
  }
}

void RandomWalk::machineDoes(Event event) {
  if (event == Event::defaultDeviceChanges) {
    auto route = anyRoute();
    if (route == "unknown") route = std::nullopt;
    defaultDevice_ = route;
    return audio_.setDefaultDevice(route);
  }
  auto& [uid, isPresent] = *std::next(devices_.begin(), pick(static_cast<unsigned>(devices_.size())));
  history_.back() += ": " + uid;
  if (isPresent && pick(3) > 0) return; // mostly they are there
  isPresent = !isPresent;
  if (isPresent)
    (void)audio_.returnDevice(uid);
  else
    audio_.removeDevice(uid);
}

void RandomWalk::permissionDoes(Event event) {
  if (event == Event::permissionChanges) {
    const auto code = pick(kPreflightCodes.size() + 1);
    history_.back() += " to " + std::to_string(code);
    if (code < kPreflightCodes.size()) return consent_.setPreflight(kPreflightCodes.at(code));
    return consent_.setPreflight(std::nullopt);
  }
  if (event == Event::permissionIsRequested) {
    consent_.setRequestable(pick(2) == 0); // otherwise it is probed
    return model_->requestPermission();
  }
  if (consent_.openRequests() > 0) consent_.answer(pick(2) == 0);
}

/// Building and taking down never fail at the same time: a session that can be neither built nor undone is
/// left as it is, and is not what these walks are about.
void RandomWalk::hardwareFails(Event event) {
  constexpr std::array building{Call::createProcessTap, Call::createAggregateDevice, Call::createIOProcID,
                                Call::deviceStart};
  constexpr std::array tearingDown{Call::deviceStop, Call::destroyIOProcID, Call::destroyAggregateDevice,
                                   Call::destroyProcessTap};
  constexpr std::array reading{property::kProcessObjectList, property::kProcessIsRunningOutput,
                               property::kDefaultOutputDevice, property::kDevices};
  if (event != Event::objectIsLost) audio_.clearFailures();
  switch (event) {
  case Event::buildingFails:
    return audio_.fail({.call = building.at(pick(building.size())), .after = pick(3), .times = 1 + pick(3)});
  case Event::tearingDownFails: {
    // Of a session that is there now: the undoing of one that is being built is not to fail, nor a probe's.
    const auto session = anySession();
    if (!session) return;
    const auto call = tearingDown.at(pick(tearingDown.size()));
    const auto object = call == Call::destroyProcessTap ? session->tap : session->aggregate;
    if (object == kAudioObjectUnknown) return;
    return audio_.fail({.call = call, .object = object, .times = 1 + pick(3)});
  }
  case Event::readingFails:
    return audio_.fail(
        {.selector = reading.at(pick(reading.size())), .after = pick(3), .times = 1 + pick(3)});
  case Event::objectIsLost:
    return loseObject();
  default:
    return;
  }
}

std::optional<RandomWalk::SessionObjects> RandomWalk::anySession() {
  const auto taps = sessionTaps();
  if (taps.empty()) return std::nullopt;
  const auto& tap = taps[pick(static_cast<unsigned>(taps.size()))];
  history_.back() += " of " + std::to_string(tap.description.processes.front());
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
    history_.back() += ", but was given back before";
  }
}

} // namespace sonvel
