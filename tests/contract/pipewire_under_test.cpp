#include "contract/contract_test.h"
#include "pipewire/pipewire_hardware.h"
#include "session/analysis.h"
#include "session/listener.h"
#include "session/private_session.h"
#include "session/tone_client.h"

#include <algorithm>
#include <chrono>
#include <map>
#include <memory>
#include <thread>

namespace sonvel::contract {

namespace {

using namespace std::chrono_literals;

constexpr std::size_t kReadingFrames = 8192;

class NamedByClient final : public ApplicationIdentity {
 public:
  std::optional<std::string> bundleIdentifier(const AudioClient& client) const override {
    return client.applicationName;
  }
};

/// The real thing: programs are processes, ears are the monitors of the sinks.
class PipeWireUnderTest final : public AudioSystemUnderTest {
 public:
  PipeWireUnderTest() {
    session_.apply();
    for (const char* const name : {"Speakers", "Headphones"})
      ears_[name] = std::make_unique<session::Listener>(session_, name);
    hardware_ = std::make_unique<pipewire::PipeWireHardware>(identity_);
  }

  AudioHardware& hardware() override { return *hardware_; }

  std::int32_t startProgram(Tone tone) override {
    auto program = std::make_unique<session::ToneClient>(session_);
    const std::int32_t pid = program->pid();
    programs_[pid].client = std::move(program);
    openStream(pid, tone);
    return pid;
  }

  void openStream(std::int32_t pid, Tone tone) override {
    Program& program = programs_.at(pid);
    program.streams.push_back("stream " + std::to_string(program.streams.size()));
    program.client->open(program.streams.back(),
                         {.tone = {static_cast<int>(tone.frequencyHz), tone.amplitude}});
  }

  void pauseProgram(std::int32_t pid) override {
    for (const auto& stream : programs_.at(pid).streams)
      programs_.at(pid).client->cork(stream);
  }

  void resumeProgram(std::int32_t pid) override {
    for (const auto& stream : programs_.at(pid).streams)
      programs_.at(pid).client->uncork(stream);
  }

  void endProgram(std::int32_t pid) override { programs_.erase(pid); }

  std::string deviceUID(const std::string& deviceName) override { return deviceName; }

  void setDefaultDevice(const std::string& deviceUID) override { session_.setDefaultSink(deviceUID); }

  double loudness(const std::string& deviceUID, double frequencyHz) override {
    const auto heard = hear(deviceUID);
    return session::toneAmplitude(heard.left, frequencyHz);
  }

  bool exactZeros(const std::string& deviceUID) override {
    const auto heard = hear(deviceUID);
    const auto isZero = [](float sample) { return sample == 0.0F; };
    return std::ranges::all_of(heard.left, isZero) && std::ranges::all_of(heard.right, isZero);
  }

  bool waitUntil(const std::function<bool()>& isSo) override {
    const auto deadline = std::chrono::steady_clock::now() + 20s;
    while (!isSo()) {
      if (std::chrono::steady_clock::now() > deadline) return false;
      std::this_thread::sleep_for(2ms);
    }
    return true;
  }

  void letCyclesPass(const std::string& deviceUID) override { hear(deviceUID); }

  bool nothingOfOursIsLeft() override {
    return session_.waitForGraph([](const session::Graph& graph) {
      const auto isOurs = [](const session::GraphObject& object) {
        return object.property("node.name").starts_with("sonvel");
      };
      const auto isOurEntry = [](const session::MetadataEntry& entry) {
        return entry.key.starts_with("sonvel") || entry.value.starts_with("sonvel");
      };
      return std::ranges::none_of(graph.objects, isOurs) && std::ranges::none_of(graph.metadata, isOurEntry);
    });
  }

 private:
  struct Program {
    std::unique_ptr<session::ToneClient> client;
    std::vector<std::string> streams;
  };

  /// What comes to the device from now on.
  session::Recording hear(const std::string& deviceUID) {
    const auto& ear = *ears_.at(deviceUID);
    const auto mark = ear.mark();
    EXPECT_TRUE(ear.waitForFrames(mark, kReadingFrames, 20s));
    auto heard = ear.since(mark);
    heard.left.resize(kReadingFrames);
    heard.right.resize(kReadingFrames);
    return heard;
  }

  session::PrivateSession session_;
  NamedByClient identity_;
  std::map<std::string, std::unique_ptr<session::Listener>> ears_;
  std::map<std::int32_t, Program> programs_;
  std::unique_ptr<pipewire::PipeWireHardware> hardware_;
};

const BackEnd kPipeWire{"pipewire", [] { return std::make_unique<PipeWireUnderTest>(); }};

std::string nameOf(const testing::TestParamInfo<BackEnd>& info) {
  return info.param.name;
}

INSTANTIATE_TEST_SUITE_P(PipeWire, AudioContract, testing::Values(kPipeWire), nameOf);

} // namespace

} // namespace sonvel::contract
