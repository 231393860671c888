#include "contract/audio_system_under_test.h"
#include "simulated/simulated_audio.h"

#include <algorithm>
#include <cmath>
#include <complex>
#include <numbers>

namespace sonvel::contract {

namespace {

using namespace simulated;

constexpr std::uint32_t kCycleFrames = 4800; // 0.1 s, which holds whole periods of every multiple of 10 Hz
constexpr int kPatience = 100;

Signal signal(Tone tone) {
  return sineSignal(tone.frequencyHz, static_cast<float>(tone.amplitude));
}

double amplitudeOf(double frequencyHz, const std::vector<Frame>& frames) {
  const double turn = -2.0 * std::numbers::pi * frequencyHz / kSampleRateHz;
  std::complex<double> sum;
  for (std::size_t i = 0; i < frames.size(); ++i)
    sum += static_cast<double>(frames[i].left) * std::polar(1.0, turn * static_cast<double>(i));
  return 2.0 * std::abs(sum) / static_cast<double>(frames.size());
}

class SimulatedUnderTest final : public AudioSystemUnderTest {
 public:
  SimulatedUnderTest() {
    for (const char* const name : {kSpeakers, kHeadphones})
      audio_.addDevice({.uid = name,
                        .name = name,
                        .volumes = {{kElementMain, {}}, {kElementLeft, {}}, {kElementRight, {}}}});
  }

  AudioHardware& hardware() override { return audio_; }

  std::int32_t startProgram(Tone tone, const std::string& bundleID) override {
    const std::int32_t pid = nextPID_++;
    processes_[pid] = audio_.addProcess({.pid = pid, .bundleID = bundleID, .streams = {signal(tone)}});
    return pid;
  }

  void openStream(std::int32_t pid, Tone tone, bool isFixed) override {
    if (isFixed)
      audio_.setFixedStreams(processes_.at(pid), {signal(tone)});
    else
      audio_.addStream(processes_.at(pid), signal(tone));
  }

  void setPlaying(std::int32_t pid, bool isPlaying) override {
    audio_.setPlaying(processes_.at(pid), isPlaying);
  }

  void endProgram(std::int32_t pid) override { audio_.removeProcess(processes_.at(pid)); }

  void setDefaultDevice(const std::string& device) override { audio_.setDefaultDevice(device); }

  testing::AssertionResult becomesAudible(const std::string& device, Tone tone) override {
    double heard = -1.0;
    const auto isHeard = [&] {
      letCyclesPass();
      heard = amplitudeOf(tone.frequencyHz, audio_.heard(device));
      return std::abs(heard - tone.amplitude) <= std::max(tone.amplitude * 0.005, 1e-5);
    };
    if (waitUntil(isHeard)) return testing::AssertionSuccess();
    return testing::AssertionFailure() << heard << " is heard at " << device;
  }

  testing::AssertionResult becomesSilent(const std::string& device) override {
    letCyclesPass();
    return testing::AssertionResult(waitUntil([&] { return isSilent(device); }));
  }

  bool isSilentDuring(const std::function<void()>& act) override {
    wasHeard_ = false;
    act();
    letCyclesPass();
    return !wasHeard_;
  }

  bool waitUntil(const std::function<bool()>& isSo) override {
    for (int i = 0; i < kPatience; ++i) {
      if (isSo()) return true;
      letCyclesPass();
    }
    return false;
  }

  void letCyclesPass() override {
    audio_.runCycle(kCycleFrames);
    wasHeard_ |= !isSilent(kSpeakers) || !isSilent(kHeadphones);
  }

  bool nothingOfOursIsLeft() override { return audio_.isClean(); }

 private:
  bool isSilent(const std::string& device) {
    return std::ranges::all_of(audio_.heard(device), [](const Frame& frame) { return frame == Frame{}; });
  }

  SimulatedAudio audio_;
  std::map<std::int32_t, AudioObjectID> processes_;
  std::int32_t nextPID_ = 1000;
  bool wasHeard_ = false;
};

} // namespace

std::unique_ptr<AudioSystemUnderTest> makeSystemUnderTest() {
  return std::make_unique<SimulatedUnderTest>();
}

} // namespace sonvel::contract
