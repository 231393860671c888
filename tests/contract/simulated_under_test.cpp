#include "contract/contract_test.h"
#include "simulated/simulated_audio.h"

#include <algorithm>
#include <cmath>
#include <complex>
#include <numbers>

namespace sonvel::contract {

namespace {

using namespace simulated;

constexpr std::uint32_t kCycleFrames = 480;
constexpr int kCyclesPerReading = 10; // 0.1 s, which holds whole periods of every multiple of 10 Hz
constexpr int kPatience = 100;

class SimulatedUnderTest final : public AudioSystemUnderTest {
 public:
  SimulatedUnderTest() {
    for (const char* const name : {"Speakers", "Headphones"})
      audio_.addDevice({.uid = std::string("uid-of-") + name,
                        .name = name,
                        .volumes = {{kElementMain, {}}, {kElementLeft, {}}, {kElementRight, {}}}});
  }

  AudioHardware& hardware() override { return audio_; }

  std::int32_t startProgram(Tone tone) override {
    const std::int32_t pid = nextPID_++;
    processes_[pid] = audio_.addProcess({.pid = pid, .streams = {signal(tone)}});
    return pid;
  }

  void openStream(std::int32_t pid, Tone tone) override {
    audio_.addStream(processes_.at(pid), signal(tone));
  }

  void pauseProgram(std::int32_t pid) override { audio_.setPlaying(processes_.at(pid), false); }

  void resumeProgram(std::int32_t pid) override { audio_.setPlaying(processes_.at(pid), true); }

  void endProgram(std::int32_t pid) override { audio_.removeProcess(processes_.at(pid)); }

  std::string deviceUID(const std::string& deviceName) override { return "uid-of-" + deviceName; }

  void setDefaultDevice(const std::string& deviceUID) override { audio_.setDefaultDevice(deviceUID); }

  double loudness(const std::string& deviceUID, double frequencyHz) override {
    const auto frames = listen(deviceUID);
    std::complex<double> sum = 0.0;
    for (std::size_t i = 0; i < frames.size(); ++i)
      sum += std::polar<double>(frames[i].left, -2.0 * std::numbers::pi * frequencyHz *
                                                    static_cast<double>(i) / kSampleRateHz);
    return 2.0 * std::abs(sum) / static_cast<double>(frames.size());
  }

  bool exactZeros(const std::string& deviceUID) override {
    const auto frames = listen(deviceUID);
    return std::all_of(frames.begin(), frames.end(), [](const Frame& frame) { return frame == Frame{}; });
  }

  bool waitUntil(const std::function<bool()>& isSo) override {
    for (int i = 0; i < kPatience; ++i) {
      if (isSo()) return true;
      audio_.runCycle(kCycleFrames);
    }
    return false;
  }

  void letCyclesPass(const std::string& deviceUID) override { listen(deviceUID); }

  bool nothingOfOursIsLeft() override { return audio_.isClean(); }

 private:
  static Signal signal(Tone tone) { return sineSignal(tone.frequencyHz, static_cast<float>(tone.amplitude)); }

  std::vector<Frame> listen(const std::string& deviceUID) {
    std::vector<Frame> frames;
    for (int i = 0; i < kCyclesPerReading; ++i) {
      audio_.runCycle(kCycleFrames);
      const auto heard = audio_.heard(deviceUID);
      frames.insert(frames.end(), heard.begin(), heard.end());
    }
    return frames;
  }

  SimulatedAudio audio_;
  std::map<std::int32_t, AudioObjectID> processes_;
  std::int32_t nextPID_ = 1000;
};

const BackEnd kSimulated{"simulated", [] { return std::make_unique<SimulatedUnderTest>(); }};

std::string nameOf(const testing::TestParamInfo<BackEnd>& info) {
  return info.param.name;
}

INSTANTIATE_TEST_SUITE_P(Simulated, AudioContract, testing::Values(kSimulated), nameOf);

} // namespace

} // namespace sonvel::contract
