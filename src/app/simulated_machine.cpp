#include "app/simulated_machine.h"

#include <array>
#include <cmath>
#include <mutex>
#include <numbers>

namespace sonvel {

namespace {

using namespace std::chrono_literals;

constexpr std::uint32_t kCycleFrames = 480; // 10 ms at the simulation's sample rate
constexpr auto kCycleDuration = 10ms;
constexpr std::uint64_t kCyclesPerSecond = 100;

/// A simulated application, and when it plays.
struct Performance {
  const char* name;
  const char* bundleID;
  const char* icon;
  double swellHz; ///< frequency of the loudness changes
  std::uint64_t playsSeconds;
  std::uint64_t pausesSeconds; ///< pause after each playing period; 0: no pause
};

constexpr std::array kPerformances{
    Performance{"Music", "org.example.music", "multimedia-audio-player", 0.5, 60, 0},
    Performance{"Browser", "org.example.browser", "internet-web-browser", 0.9, 14, 8},
    Performance{"Video Player", "org.example.video", "video-x-generic", 0.3, 25, 10},
    Performance{"Game with a Long Name That Does Not Fit", "org.example.game", "applications-games", 1.7, 9,
                20}};

bool playsAt(const Performance& performance, std::uint64_t cycle) {
  const auto second = cycle / kCyclesPerSecond;
  return second % (performance.playsSeconds + performance.pausesSeconds) < performance.playsSeconds;
}

/// A tone of changing loudness, so that meters move.
simulated::Signal swellingTone(double swellHz) {
  return [swellHz](std::uint64_t frame) {
    const double seconds = static_cast<double>(frame) / simulated::kSampleRateHz;
    const auto wave = [&](double hertz) { return std::sin(2.0 * std::numbers::pi * hertz * seconds); };
    const auto sample = static_cast<float>((0.35 + 0.3 * wave(swellHz)) * wave(440.0));
    return simulated::Frame{sample, sample};
  };
}

} // namespace

SimulatedMachine::SimulatedMachine() {
  server_.setRights(AudioServer::Rights::granted);
  server_.setConnection(AudioServer::Connection::connected);
  audio_.addDevice({.uid = "speakers", .name = "Speakers", .volumes = {{kElementMain, {0.5F}}}});
  audio_.addDevice({.uid = "headphones", .name = "Headphones", .volumes = {{kElementMain, {0.8F}}}});
  audio_.addDevice({.uid = "monitor", .name = "Monitor (HDMI)"}); // has no volume
  icons_.setGenericIcon("application-x-executable");
  player_ = std::jthread([this](const std::stop_token& end) { play(end); });
}

void SimulatedMachine::play(const std::stop_token& end) {
  std::array<AudioObjectID, kPerformances.size()> processes{};
  std::int32_t pid = 1000;
  for (std::size_t i = 0; i < processes.size(); ++i, ++pid) {
    const auto& performance = kPerformances[i];
    applications_.addApplication(
        {.processID = pid, .bundleIdentifier = performance.bundleID, .localizedName = performance.name});
    icons_.setRunningIcon(pid, performance.icon);
    processes[i] = audio_.addProcess(
        {.pid = pid, .bundleID = performance.bundleID, .streams = {swellingTone(performance.swellHz)}});
  }
  std::mutex mutex;
  std::condition_variable_any never;
  std::unique_lock lock(mutex);
  for (std::uint64_t cycle = 0; !end.stop_requested(); ++cycle) {
    if (cycle % kCyclesPerSecond == 0)
      for (std::size_t i = 0; i < processes.size(); ++i)
        audio_.setPlaying(processes[i], playsAt(kPerformances[i], cycle));
    audio_.runCycle(kCycleFrames);
    never.wait_for(lock, end, kCycleDuration, [] { return false; });
  }
}

} // namespace sonvel
