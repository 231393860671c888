#include "contract/contract_test.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace sonvel::contract {

namespace {

constexpr Tone kTone{.frequencyHz = 1000.0, .amplitude = 0.4};
constexpr auto kUnheardOfSelector = fourCharCode("zzzz");

constexpr PropertyAddress volume(std::uint32_t element) noexcept {
  return {.selector = property::kDeviceVolumeScalar, .scope = scope::kOutput, .element = element};
}

} // namespace

TEST_F(AudioContract, DevicesHaveNamesAndStreamsAndAnAggregateDeviceIsOneOfThem) {
  for (const char* const name : {kSpeakers, kHeadphones}) {
    EXPECT_EQ(text(deviceWithUID(name), property::kObjectName), name);
    std::uint32_t size = 0;
    const PropertyAddress streams{property::kDeviceStreams, scope::kOutput, kElementMain};
    EXPECT_EQ(hardware().getPropertyDataSize(deviceWithUID(name), streams, size), kNoError);
    EXPECT_GT(size, 0U) << name;
  }
  EXPECT_EQ(defaultDevice(), deviceWithUID(kSpeakers));

  auto devices = list(property::kDevices);
  TapChain chain = tap(startAudibleProgram(kTone).process, kSpeakers);
  EXPECT_EQ(text(chain.aggregate, property::kObjectName), "ContractAggregate");
  EXPECT_EQ(deviceWithUID(text(chain.aggregate, property::kDeviceUID).value_or("")), chain.aggregate);
  EXPECT_EQ(std::ranges::count(devices, chain.aggregate), 0);
  chain.destroy();
  EXPECT_EQ(list(property::kDevices), devices);
}

TEST_F(AudioContract, VolumeIsReadAsItWasWrittenAndTheMainOneKeepsTheBalance) {
  startAudibleProgram(kTone); // some devices accept a volume only after they have run
  const AudioObjectID device = deviceWithUID(kSpeakers);
  const auto write = [&](std::uint32_t element, float scalar, float wanted) {
    bool isSettable = false;
    EXPECT_EQ(hardware().isPropertySettable(device, volume(element), isSettable), kNoError);
    EXPECT_TRUE(isSettable);
    EXPECT_EQ(hardware().setPropertyData(device, volume(element), std::as_bytes(std::span(&scalar, 1))),
              kNoError);
    EXPECT_TRUE(system().waitUntil([&] {
      const auto value = number<float>(device, volume(element));
      return value && std::abs(*value - wanted) < 0.002F;
    })) << scalar;
  };

  write(kElementLeft, 0.8F, 0.8F);
  write(kElementRight, 0.4F, 0.4F);
  for (const float scalar : {0.5F, 1.5F}) {
    write(kElementMain, scalar, std::min(scalar, 1.0F));
    const float left = number<float>(device, volume(kElementLeft)).value_or(0.0F);
    EXPECT_NEAR(left / number<float>(device, volume(kElementRight)).value_or(1.0F), 2.0F, 0.02F) << scalar;
  }
  for (const float scalar : {0.0F, 1.0F})
    write(kElementMain, scalar, scalar);
}

TEST_F(AudioContract, WhatDoesNotExistIsRefused) {
  struct Case {
    AudioObjectID object;
    PropertyAddress address;
    OSStatus expected;
  };

  const AudioObjectID device = deviceWithUID(kSpeakers);
  const std::array cases = {
      Case{kUnheardOfObject, global(property::kDeviceUID), status::kBadObject},
      Case{kAudioObjectUnknown, global(property::kDeviceUID), status::kBadObject},
      Case{kSystemObject, global(kUnheardOfSelector), status::kUnknownProperty},
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

} // namespace sonvel::contract
