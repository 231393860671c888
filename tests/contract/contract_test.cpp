#include "contract/contract_test.h"

#include <algorithm>
#include <cmath>

namespace sonvel::contract {

namespace {

std::span<float> samplesOf(const AudioBuffer& buffer) {
  return {static_cast<float*>(buffer.data), buffer.data != nullptr ? buffer.sizeBytes / sizeof(float) : 0};
}

} // namespace

IOProcBlock playingBlock(std::shared_ptr<BlockState> state) {
  return [state = std::move(state)](const AudioTimeStamp&, const AudioBufferList& input,
                                    const AudioTimeStamp&, AudioBufferList& output, const AudioTimeStamp&) {
    const float gain = state->gain;
    float peak = 0.0F;
    for (std::size_t side = 0; side < std::min(input.buffers.size(), output.buffers.size()); ++side) {
      const auto in = samplesOf(input.buffers[side]);
      const auto out = samplesOf(output.buffers[side]);
      for (std::size_t i = 0; i < std::min(in.size(), out.size()); ++i) {
        if (gain != 0.0F) out[i] = in[i] * gain;
        peak = std::max(peak, std::abs(in[i]));
      }
      if (gain != 0.0F)
        output.buffers[side].writtenBytes =
            static_cast<std::uint32_t>(std::min(in.size(), out.size()) * sizeof(float));
    }
    state->inputPeak = peak;
    ++state->calls;
  };
}

TapDescription tapOn(AudioObjectID process, TapMuteBehavior muteBehavior) {
  return {.processes = {process}, .name = "ContractTap", .isPrivate = true, .muteBehavior = muteBehavior};
}

AggregateDeviceDescription aggregateOf(const std::string& device, const std::string& tapUID) {
  return {.name = "ContractAggregate",
          .uid = "contract-aggregate-of-" + tapUID,
          .mainSubDeviceUID = device,
          .isPrivate = true,
          .isStacked = false,
          .tapAutoStart = true,
          .subDevices = {{device}},
          .taps = {{.uid = tapUID, .driftCompensation = true}}};
}

TapChain::TapChain(AudioHardware& hardware, AudioObjectID process, const std::string& device, Options options)
    : state(std::make_shared<BlockState>(options.gain))
    , hardware_(hardware) {
  auto description = tapOn(process, options.muteBehavior);
  description.bundleIDs = options.bundleIDs;
  std::optional<std::string> tapUID;
  EXPECT_EQ(hardware.createProcessTap(description, tap), kNoError);
  EXPECT_EQ(hardware.getPropertyData(tap, global(property::kTapUID), tapUID), kNoError);
  EXPECT_EQ(hardware.createAggregateDevice(aggregateOf(device, tapUID.value_or("")), aggregate), kNoError);
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
  EXPECT_EQ(hardware_.destroyIOProcID(aggregate, std::exchange(ioProc, 0)), kNoError);
  EXPECT_EQ(hardware_.destroyAggregateDevice(std::exchange(aggregate, kAudioObjectUnknown)), kNoError);
  EXPECT_EQ(hardware_.destroyProcessTap(std::exchange(tap, kAudioObjectUnknown)), kNoError);
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

AudioObjectID AudioContract::defaultDevice() {
  return number<AudioObjectID>(kSystemObject, global(property::kDefaultOutputDevice)).value_or(0);
}

bool AudioContract::isPlaying(AudioObjectID process) {
  return number<std::uint32_t>(process, global(property::kProcessIsRunningOutput)).value_or(0) != 0;
}

AudioContract::Program AudioContract::startAudibleProgram(Tone tone, const std::string& bundleID) {
  const std::int32_t pid = system().startProgram(tone, bundleID);
  EXPECT_TRUE(system().waitUntil([&] { return isPlaying(processWithPID(pid)); }));
  EXPECT_TRUE(system().becomesAudible(text(defaultDevice(), property::kDeviceUID).value_or(""), tone));
  return {pid, processWithPID(pid)};
}

testing::AssertionResult AudioContract::blockHears(const BlockState& state, double least, double most) {
  if (system().waitUntil([&] { return state.inputPeak >= least && state.inputPeak <= most; }))
    return testing::AssertionSuccess();
  return testing::AssertionFailure() << "after " << state.calls << " calls the block hears "
                                     << state.inputPeak;
}

testing::AssertionResult AudioContract::blockRuns(const BlockState& state) {
  const int before = state.calls;
  if (system().waitUntil([&] { return state.calls >= before + 2; })) return testing::AssertionSuccess();
  return testing::AssertionFailure() << "the block was called " << state.calls - before << " times";
}

testing::AssertionResult AudioContract::blockIsGone(const std::shared_ptr<BlockState>& state) {
  const int before = state->calls;
  system().letCyclesPass();
  if (state->calls == before && state.use_count() == 1) return testing::AssertionSuccess();
  return testing::AssertionFailure() << "it was called " << state->calls - before << " times, and has "
                                     << state.use_count() - 1 << " other owners";
}

} // namespace sonvel::contract
