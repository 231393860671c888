// Checks by listening whether other programs' audio can be captured.

#include "engine/capture_probe.h"
#include "engine/hardware_controller.h"

namespace sonvel {

namespace {

constexpr std::chrono::milliseconds kListeningTime{600};

} // namespace

HardwareController::ListeningProbe::ListeningProbe(std::unique_ptr<CaptureProbe> captureProbe,
                                                   std::unique_ptr<Timer> timer, ProbeAnswer onAnswer)
    : probe(std::move(captureProbe))
    , wake(std::move(timer))
    , answer(std::move(onAnswer)) {}

HardwareController::ListeningProbe::~ListeningProbe() = default;

HardwareController::~HardwareController() {
  for (auto& [number, listening] : listeningProbes_) {
    listening.probe.reset();
    listening.answer(false);
  }
}

void HardwareController::probeCapture(ProbeAnswer answer) {
  assertOnExecutor();
  const auto apps = enumerateAudibleApps(environment_);
  if (apps.empty()) return answer(std::nullopt);
  auto probe = std::make_unique<CaptureProbe>(environment_.hardware, ioQueue_);
  if (!probe->start(apps.front().objectID)) {
    probe.reset();
    return answer(false);
  }
  const auto number = ++lastProbe_;
  auto wake = clock_.callAfter(kListeningTime, relay_.bind([this, number] { finishProbe(number); }));
  listeningProbes_.emplace(number, ListeningProbe(std::move(probe), std::move(wake), std::move(answer)));
}

void HardwareController::finishProbe(std::uint64_t number) {
  assertOnExecutor();
  const auto found = listeningProbes_.extract(number);
  auto& [probe, wake, answer] = found.mapped();
  const bool hasHeard = probe->hasHeardSomething();
  probe.reset();
  answer(hasHeard);
}

} // namespace sonvel
