#include "contract/contract_test.h"

#include <algorithm>
#include <cmath>

namespace sonvel::contract {

namespace {

bool isNear(double amplitude, double wanted, double toleranceDB) {
  return amplitude > 0.0 && std::abs(20.0 * std::log10(amplitude / wanted)) <= toleranceDB;
}

std::span<float> samplesOf(const AudioBuffer& buffer) {
  return {static_cast<float*>(buffer.data), buffer.data != nullptr ? buffer.sizeBytes / sizeof(float) : 0};
}

} // namespace

IOProcBlock playingBlock(std::shared_ptr<BlockState> state) {
  return [state = std::move(state)](const AudioTimeStamp&, const AudioBufferList& input,
                                    const AudioTimeStamp&, AudioBufferList& output, const AudioTimeStamp&) {
    float peak = 0.0F;
    if (!input.buffers.empty() && !output.buffers.empty()) {
      const auto in = samplesOf(input.buffers.front());
      const auto out = samplesOf(output.buffers.front());
      for (std::size_t i = 0; i < std::min(in.size(), out.size()); ++i) {
        out[i] = in[i] * state->gain;
        peak = std::max(peak, std::abs(in[i]));
      }
    }
    state->inputPeak = peak;
    ++state->calls;
  };
}

TapDescription tapOn(AudioObjectID process, TapMuteBehavior muteBehavior) {
  return {.processes = {process}, .name = "ContractTap", .isPrivate = true, .muteBehavior = muteBehavior};
}

AggregateDeviceDescription aggregateOf(const std::string& deviceUID, const std::string& tapUID) {
  return {.name = "ContractAggregate",
          .uid = "contract-aggregate-of-" + tapUID,
          .mainSubDeviceUID = deviceUID,
          .isPrivate = true,
          .isStacked = false,
          .tapAutoStart = true,
          .subDevices = {{deviceUID}},
          .taps = {{.uid = tapUID, .driftCompensation = true}}};
}

TapChain::TapChain(AudioHardware& hardware, AudioObjectID process, const std::string& deviceUID,
                   Options options)
    : state(std::make_shared<BlockState>(options.gain))
    , hardware_(hardware) {
  std::optional<std::string> tapUID;
  EXPECT_EQ(hardware.createProcessTap(tapOn(process, options.muteBehavior), tap), kNoError);
  EXPECT_EQ(hardware.getPropertyData(tap, global(property::kTapUID), tapUID), kNoError);
  EXPECT_EQ(hardware.createAggregateDevice(aggregateOf(deviceUID, tapUID.value_or("")), aggregate), kNoError);
  EXPECT_EQ(hardware.createIOProcID(aggregate, {.label = "contract"}, playingBlock(state), ioProc), kNoError);
  if (options.isStarted) {
    EXPECT_EQ(hardware.deviceStart(aggregate, ioProc), kNoError);
  }
}

TapChain::~TapChain() {
  if (ioProc != 0) hardware_.destroyIOProcID(aggregate, ioProc);
  if (aggregate != kAudioObjectUnknown) hardware_.destroyAggregateDevice(aggregate);
  if (tap != kAudioObjectUnknown) hardware_.destroyProcessTap(tap);
}

void TapChain::destroy() {
  EXPECT_EQ(hardware_.deviceStop(aggregate, ioProc), kNoError);
  EXPECT_EQ(hardware_.destroyIOProcID(aggregate, ioProc), kNoError);
  ioProc = 0;
  EXPECT_EQ(hardware_.destroyAggregateDevice(aggregate), kNoError);
  aggregate = kAudioObjectUnknown;
  EXPECT_EQ(hardware_.destroyProcessTap(tap), kNoError);
  tap = kAudioObjectUnknown;
}

std::vector<AudioObjectID> AudioContract::list(std::uint32_t selector) {
  std::uint32_t size = 0;
  EXPECT_EQ(hardware().getPropertyDataSize(kSystemObject, global(selector), size), kNoError);
  std::vector<AudioObjectID> objects(size / sizeof(AudioObjectID));
  const auto bytes = std::as_writable_bytes(std::span(objects));
  EXPECT_EQ(hardware().getPropertyData(kSystemObject, global(selector), size, bytes), kNoError);
  objects.resize(size / sizeof(AudioObjectID));
  return objects;
}

std::optional<std::string> AudioContract::text(AudioObjectID object, std::uint32_t selector) {
  std::optional<std::string> value;
  if (hardware().getPropertyData(object, global(selector), value)) return std::nullopt;
  return value;
}

AudioObjectID AudioContract::processWithPID(std::int32_t pid) {
  for (const AudioObjectID process : list(property::kProcessObjectList))
    if (number<std::int32_t>(process, global(property::kProcessPID)) == pid) return process;
  return kAudioObjectUnknown;
}

AudioObjectID AudioContract::deviceWithUID(const std::string& uid) {
  for (const AudioObjectID device : list(property::kDevices))
    if (text(device, property::kDeviceUID) == uid) return device;
  return kAudioObjectUnknown;
}

AudioObjectID AudioContract::startAudibleProgram(Tone tone) {
  const std::int32_t pid = system().startProgram(tone);
  AudioObjectID process = kAudioObjectUnknown;
  EXPECT_TRUE(system().waitUntil([&] {
    process = processWithPID(pid);
    return process != kAudioObjectUnknown && isPlaying(process);
  }));
  const auto device = number<AudioObjectID>(kSystemObject, global(property::kDefaultOutputDevice));
  EXPECT_TRUE(becomesAudible(text(device.value_or(0), property::kDeviceUID).value_or(""), tone));
  return process;
}

bool AudioContract::isPlaying(AudioObjectID process) {
  return number<std::uint32_t>(process, global(property::kProcessIsRunningOutput)).value_or(0) != 0;
}

testing::AssertionResult AudioContract::becomesAudible(const std::string& deviceUID, Tone tone,
                                                       double toleranceDB) {
  double amplitude = 0.0;
  const auto isAudible = [&] {
    amplitude = system().loudness(deviceUID, tone.frequencyHz);
    return isNear(amplitude, tone.amplitude, toleranceDB);
  };
  if (system().waitUntil(isAudible)) return testing::AssertionSuccess();
  return testing::AssertionFailure() << tone.frequencyHz << " Hz is heard at " << deviceUID << " with "
                                     << amplitude << " instead of " << tone.amplitude;
}

testing::AssertionResult AudioContract::becomesSilent(const std::string& deviceUID) {
  if (system().waitUntil([&] { return system().exactZeros(deviceUID); })) return testing::AssertionSuccess();
  return testing::AssertionFailure() << deviceUID << " is not silent";
}

testing::AssertionResult AudioContract::blockHears(const BlockState& state, double amplitude) {
  constexpr double kToleranceDB = 0.1; // the samples of a tone need not meet its top
  if (system().waitUntil([&] { return isNear(state.inputPeak, amplitude, kToleranceDB); }))
    return testing::AssertionSuccess();
  return testing::AssertionFailure() << "after " << state.calls << " calls the block hears "
                                     << state.inputPeak << " instead of " << amplitude;
}

testing::AssertionResult AudioContract::blockRuns(const BlockState& state) {
  const int before = state.calls;
  if (system().waitUntil([&] { return state.calls >= before + 2; })) return testing::AssertionSuccess();
  return testing::AssertionFailure() << "the block was called " << state.calls - before << " times";
}

} // namespace sonvel::contract
