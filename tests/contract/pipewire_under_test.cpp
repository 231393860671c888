#include "contract/audio_system_under_test.h"
#include "pipewire/pipewire_hardware.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <sstream>
#include <stdexcept>
#include <thread>
#include <unistd.h>

namespace sonvel::contract {

namespace {

using namespace std::chrono_literals;

/// Sends a request to the script that started this process and its sound server: see world.py.
template <class... Words> std::string ask(const Words&... words) {
  static const int world = std::stoi(std::getenv("SONVEL_WORLD"));
  std::ostringstream line;
  ((line << words << ' '), ...);
  dprintf(world, "%s\n", line.str().c_str());
  std::string answer;
  for (char byte = 0; byte != '\n'; answer += byte)
    if (read(world, &byte, 1) != 1) throw std::runtime_error("no answer to " + line.str());
  answer.pop_back();
  return answer;
}

testing::AssertionResult isTrue(const std::string& answer) {
  return testing::AssertionResult(answer == "True") << answer;
}

class NamedByClient final : public ApplicationIdentity {
 public:
  std::optional<std::string> bundleIdentifier(const AudioClient& client) const override {
    return client.applicationName;
  }
};

class PipeWireUnderTest final : public AudioSystemUnderTest {
 public:
  AudioHardware& hardware() override { return hardware_; }

  std::int32_t startProgram(Tone tone, const std::string& bundleID) override {
    return std::stoi(ask("start", tone.frequencyHz, tone.amplitude, bundleID));
  }

  void openStream(std::int32_t pid, Tone tone, bool isFixed) override {
    ask("open", pid, tone.frequencyHz, tone.amplitude, isFixed ? "fixed" : "");
  }

  void setPlaying(std::int32_t pid, bool isPlaying) override { ask(isPlaying ? "play" : "pause", pid); }

  void endProgram(std::int32_t pid) override { ask("end", pid); }

  void setDefaultDevice(const std::string& device) override { ask("default", device); }

  testing::AssertionResult becomesAudible(const std::string& device, Tone tone) override {
    return isTrue(ask("audible", device, tone.frequencyHz, tone.amplitude));
  }

  testing::AssertionResult becomesSilent(const std::string& device) override {
    return isTrue(ask("silent", device));
  }

  bool isSilentDuring(const std::function<void()>& act) override {
    ask("mark");
    act();
    letCyclesPass();
    return isTrue(ask("silent_since_mark"));
  }

  bool waitUntil(const std::function<bool()>& isSo) override {
    const auto deadline = std::chrono::steady_clock::now() + 20s;
    while (!isSo()) {
      if (std::chrono::steady_clock::now() > deadline) return false;
      std::this_thread::sleep_for(2ms);
    }
    return true;
  }

  void letCyclesPass() override { ask("cycles"); }

  bool nothingOfOursIsLeft() override { return isTrue(ask("clean")); }

 private:
  NamedByClient identity_;
  pipewire::PipeWireHardware hardware_{identity_};
};

} // namespace

std::unique_ptr<AudioSystemUnderTest> makeSystemUnderTest() {
  return std::make_unique<PipeWireUnderTest>();
}

} // namespace sonvel::contract
