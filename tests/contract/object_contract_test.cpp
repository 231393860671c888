#include "contract/contract_test.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace sonvel::contract {

namespace {

constexpr Tone kTone{.frequencyHz = 1000.0, .amplitude = 0.4};
constexpr auto kUnheardOfSelector = fourCharCode("zzzz");

} // namespace

TEST_P(AudioContract, ProcessIsListedFromItsSoundToItsEnd) {
  const std::int32_t pid = system().startProgram(kTone);
  EXPECT_TRUE(system().waitUntil([&] { return isPlaying(processWithPID(pid)); }));
  const AudioObjectID process = processWithPID(pid);

  system().endProgram(pid);
  EXPECT_TRUE(system().waitUntil([&] { return processWithPID(pid) == kAudioObjectUnknown; }));
  std::int32_t value = 0;
  std::uint32_t size = 0;
  EXPECT_EQ(hardware().getPropertyData(process, global(property::kProcessPID), size,
                                       std::as_writable_bytes(std::span(&value, 1))),
            status::kBadObject);
}

TEST_P(AudioContract, PausedProcessIsTheSameObjectAndPlaysNothing) {
  const std::int32_t pid = system().startProgram(kTone);
  EXPECT_TRUE(system().waitUntil([&] { return isPlaying(processWithPID(pid)); }));
  const AudioObjectID process = processWithPID(pid);

  system().pauseProgram(pid);
  const auto isPaused = [&] {
    return number<std::uint32_t>(process, global(property::kProcessIsRunningOutput)) == 0U;
  };
  EXPECT_TRUE(system().waitUntil(isPaused));
  EXPECT_EQ(processWithPID(pid), process);

  system().resumeProgram(pid);
  EXPECT_TRUE(system().waitUntil([&] { return isPlaying(process); }));
  EXPECT_EQ(processWithPID(pid), process);
}

TEST_P(AudioContract, TwoProgramsAreTwoObjects) {
  const std::int32_t one = system().startProgram(kTone);
  const std::int32_t other = system().startProgram(kTone);
  EXPECT_TRUE(system().waitUntil([&] { return processWithPID(one) != 0 && processWithPID(other) != 0; }));
  EXPECT_NE(processWithPID(one), processWithPID(other));
}

TEST_P(AudioContract, DevicesHaveUIDNameAndOutputStreams) {
  for (const char* const name : {"Speakers", "Headphones"}) {
    const AudioObjectID device = deviceWithUID(system().deviceUID(name));
    ASSERT_NE(device, kAudioObjectUnknown) << name;
    EXPECT_EQ(text(device, property::kObjectName), name);
    std::uint32_t size = 0;
    EXPECT_EQ(hardware().getPropertyDataSize(device, {property::kDeviceStreams, scope::kOutput, kElementMain},
                                             size),
              kNoError);
    EXPECT_GT(size, 0U) << name;
  }
}

TEST_P(AudioContract, DefaultDeviceIsTheOneThatProgramsPlayTo) {
  const auto defaultDevice = [&] {
    return number<AudioObjectID>(kSystemObject, global(property::kDefaultOutputDevice)).value_or(0);
  };
  EXPECT_EQ(defaultDevice(), deviceWithUID(speakers()));
  startAudibleProgram(kTone);

  system().setDefaultDevice(headphones());
  EXPECT_TRUE(system().waitUntil([&] { return defaultDevice() == deviceWithUID(headphones()); }));
  EXPECT_TRUE(becomesAudible(headphones(), kTone));
  EXPECT_TRUE(becomesSilent(speakers()));
}

TEST_P(AudioContract, VolumeIsReadAsItWasWrittenAndTheMainOneKeepsTheBalance) {
  startAudibleProgram(kTone); // a device may not take a volume before it has run
  const AudioObjectID device = deviceWithUID(speakers());
  const auto write = [&](std::uint32_t element, float scalar) {
    EXPECT_TRUE(hardware().hasProperty(device, volume(element)));
    bool isSettable = false;
    EXPECT_EQ(hardware().isPropertySettable(device, volume(element), isSettable), kNoError);
    EXPECT_TRUE(isSettable);
    EXPECT_EQ(hardware().setPropertyData(device, volume(element), std::as_bytes(std::span(&scalar, 1))),
              kNoError);
  };
  const auto becomes = [&](std::uint32_t element, float scalar) {
    return system().waitUntil([&] {
      const auto value = number<float>(device, volume(element));
      return value && std::abs(*value - scalar) < 0.002F;
    });
  };

  write(kElementLeft, 0.8F);
  write(kElementRight, 0.4F);
  EXPECT_TRUE(becomes(kElementLeft, 0.8F));
  EXPECT_TRUE(becomes(kElementRight, 0.4F));

  write(kElementMain, 0.5F);
  EXPECT_TRUE(becomes(kElementMain, 0.5F));
  const float left = number<float>(device, volume(kElementLeft)).value_or(0.0F);
  const float right = number<float>(device, volume(kElementRight)).value_or(0.0F);
  EXPECT_GT(right, 0.0F);
  EXPECT_NEAR(left / right, 2.0F, 0.02F);

  write(kElementLeft, 0.6F);
  write(kElementRight, 0.6F);
  EXPECT_TRUE(becomes(kElementMain, 0.6F));
  for (const float scalar : {0.0F, 1.0F}) {
    write(kElementMain, scalar);
    EXPECT_TRUE(becomes(kElementMain, scalar)) << scalar;
  }
}

TEST_P(AudioContract, WhatDoesNotExistIsRefused) {
  struct Case {
    AudioObjectID object;
    PropertyAddress address;
    OSStatus expected;
  };

  const AudioObjectID device = deviceWithUID(speakers());
  const std::array cases = {
      Case{kUnheardOfObject, global(property::kDeviceUID), status::kBadObject},
      Case{kAudioObjectUnknown, global(property::kDeviceUID), status::kBadObject},
      Case{kSystemObject, global(kUnheardOfSelector), status::kUnknownProperty},
      Case{device, global(kUnheardOfSelector), status::kUnknownProperty},
      Case{device, global(property::kProcessPID), status::kUnknownProperty},
      Case{device, volume(17), status::kUnknownProperty},
  };
  for (const Case& item : cases) {
    SCOPED_TRACE(testing::Message() << item.object << ' ' << std::hex << item.address.selector);
    float value = 0.0F;
    std::uint32_t size = 4711;
    const auto bytes = std::as_writable_bytes(std::span(&value, 1));
    bool isSettable = false;
    std::optional<std::string> string;
    EXPECT_FALSE(hardware().hasProperty(item.object, item.address));
    EXPECT_EQ(hardware().getPropertyDataSize(item.object, item.address, size), item.expected);
    EXPECT_EQ(size, 4711U);
    EXPECT_EQ(hardware().getPropertyData(item.object, item.address, size, bytes), item.expected);
    EXPECT_EQ(hardware().getPropertyData(item.object, item.address, string), item.expected);
    EXPECT_EQ(hardware().isPropertySettable(item.object, item.address, isSettable), item.expected);
    EXPECT_EQ(hardware().setPropertyData(item.object, item.address, bytes), item.expected);
  }
}

TEST_P(AudioContract, NumberOfAnotherSizeIsRefusedAndListIsCut) {
  std::array<std::byte, 8> data{};
  std::uint32_t size = 0;
  const auto defaultDevice = global(property::kDefaultOutputDevice);
  EXPECT_EQ(hardware().getPropertyData(kSystemObject, defaultDevice, size, std::span(data).first(2)),
            status::kBadPropertySize);
  EXPECT_EQ(hardware().getPropertyData(kSystemObject, defaultDevice, size, data), status::kBadPropertySize);

  const auto devices = list(property::kDevices);
  ASSERT_GE(devices.size(), 2U);
  EXPECT_EQ(hardware().getPropertyData(kSystemObject, global(property::kDevices), size,
                                       std::span(data).first(sizeof(AudioObjectID))),
            kNoError);
  EXPECT_EQ(size, sizeof(AudioObjectID));
  AudioObjectID first = kAudioObjectUnknown;
  std::memcpy(&first, data.data(), sizeof first);
  EXPECT_EQ(first, devices.front());
}

TEST_P(AudioContract, WhatIsOnlyToldCannotBeSet) {
  bool isSettable = true;
  const AudioObjectID value = deviceWithUID(headphones());
  const auto devices = global(property::kDevices);
  EXPECT_EQ(hardware().isPropertySettable(kSystemObject, devices, isSettable), kNoError);
  EXPECT_FALSE(isSettable);
  EXPECT_EQ(hardware().setPropertyData(kSystemObject, devices, std::as_bytes(std::span(&value, 1))),
            status::kIllegalOperation);
}

TEST_P(AudioContract, AggregateDeviceIsADeviceOfItsOwn) {
  const AudioObjectID process = startAudibleProgram(kTone);
  const auto devicesBefore = list(property::kDevices);
  {
    TapChain chain(hardware(), process, speakers(), {});
    EXPECT_EQ(text(chain.aggregate, property::kObjectName), "ContractAggregate");
    const auto devices = list(property::kDevices);
    EXPECT_EQ(std::count(devices.begin(), devices.end(), chain.aggregate), 1);
    EXPECT_NE(chain.aggregate, deviceWithUID(speakers()));
    const auto uid = text(chain.aggregate, property::kDeviceUID);
    EXPECT_EQ(deviceWithUID(uid.value_or("")), chain.aggregate);
    chain.destroy();
  }
  EXPECT_EQ(list(property::kDevices), devicesBefore);
  EXPECT_TRUE(system().nothingOfOursIsLeft());
}

TEST_P(AudioContract, TapsHaveDifferentUIDs) {
  const AudioObjectID process = startAudibleProgram(kTone);
  AudioObjectID taps[2] = {};
  for (AudioObjectID& tap : taps)
    ASSERT_EQ(hardware().createProcessTap(tapOn(process, TapMuteBehavior::unmuted), tap), kNoError);
  EXPECT_NE(taps[0], taps[1]);
  const auto uid = text(taps[0], property::kTapUID);
  ASSERT_TRUE(uid.has_value());
  EXPECT_FALSE(uid->empty());
  EXPECT_NE(uid, text(taps[1], property::kTapUID));
  for (const AudioObjectID tap : taps)
    EXPECT_EQ(hardware().destroyProcessTap(tap), kNoError);
  EXPECT_TRUE(system().nothingOfOursIsLeft());
}

} // namespace sonvel::contract
