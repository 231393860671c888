#include "sound/controlled_sound.h"

#include <algorithm>
#include <thread>

namespace sonvel::sound {

bool waitUntil(const std::function<bool()>& isSo, std::chrono::milliseconds within) {
  const auto deadline = std::chrono::steady_clock::now() + within;
  while (!isSo()) {
    if (std::chrono::steady_clock::now() > deadline) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds{2});
  }
  return true;
}

bool holdsAnythingOfOurs(const session::Graph& graph) {
  const auto isOurs = [](const session::GraphObject& object) {
    return object.property("node.name").starts_with("sonvel");
  };
  const auto isOurEntry = [](const session::MetadataEntry& entry) {
    return entry.key.starts_with("sonvel") || entry.value.starts_with("sonvel");
  };
  return std::ranges::any_of(graph.objects, isOurs) || std::ranges::any_of(graph.metadata, isOurEntry);
}

ControlledSound::ControlledSound(const session::PrivateSession& session) {
  session.apply();
  audio_.emplace();
  controller_.emplace(audio_->environment(), audio_->clock());
}

std::optional<AudioApp> ControlledSound::findApp(pid_t pid) {
  std::optional<AudioApp> found;
  waitUntil([&] {
    for (const auto& app :
         with([](const HardwareController& controller) { return controller.audibleApps(); }))
      if (app.pid == pid) found = app;
    return found.has_value();
  });
  return found;
}

void ControlledSound::add(const AudioApp& app, float gain, std::optional<std::string> outputUID) {
  with([&](HardwareController& controller) { controller.addChannel(app, gain, false, outputUID); });
}

void ControlledSound::setGain(const AudioApp& app, float gain) {
  with([&](HardwareController& controller) { controller.setGain(gain, app.objectID); });
}

void ControlledSound::setMuted(const AudioApp& app, bool isMuted) {
  with([&](HardwareController& controller) { controller.setMuted(isMuted, app.objectID); });
}

void ControlledSound::setOutput(const AudioApp& app, std::optional<std::string> outputUID) {
  with([&](HardwareController& controller) { controller.setOutput(outputUID, app.objectID); });
}

std::optional<bool> ControlledSound::probe() {
  return controller_
      ->callForAnswer<std::optional<bool>>(
          [](HardwareController& controller, HardwareController::ProbeAnswer answer) {
            controller.probeCapture(std::move(answer));
          })
      .get();
}

bool ControlledSound::remove(const AudioApp& app) {
  const auto result =
      with([&](HardwareController& controller) { return controller.removeChannel(app.objectID); });
  return result && result->restored();
}

} // namespace sonvel::sound
