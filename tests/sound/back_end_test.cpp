// What the PipeWire back end does on a desktop where others change things too.
#include "contract/contract_test.h"
#include "pipewire/pipewire_hardware.h"
#include "session/analysis.h"
#include "session/listener.h"
#include "session/tone_client.h"
#include "sound/controlled_sound.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <optional>

namespace sonvel::sound {

namespace {

using namespace session;
using namespace std::chrono_literals;
using contract::global;

constexpr double kToleranceDB = 0.05;
constexpr Tone kTone{.frequency = 1000, .amplitude = 0.4};

class NamedByClient final : public ApplicationIdentity {
 public:
  std::optional<std::string> bundleIdentifier(const AudioClient& client) const override {
    return client.applicationName;
  }
};

class BackEnd : public testing::Test {
 protected:
  BackEnd() {
    session_.apply();
    hardware_.emplace(identity_);
  }

  template <class T> std::optional<T> number(AudioObjectID object, std::uint32_t selector) {
    T value = 0;
    std::uint32_t size = 0;
    const auto bytes = std::as_writable_bytes(std::span(&value, 1));
    if (hardware_->getPropertyData(object, global(selector), size, bytes) != kNoError) return std::nullopt;
    return value;
  }

  /// The object of a process, once its first stream is there.
  AudioObjectID processOf(const ToneClient& client) {
    AudioObjectID found = kAudioObjectUnknown;
    EXPECT_TRUE(waitUntil([&] {
      std::array<AudioObjectID, 16> objects{};
      std::uint32_t size = 0;
      const auto bytes = std::as_writable_bytes(std::span(objects));
      if (hardware_->getPropertyData(kSystemObject, global(property::kProcessObjectList), size, bytes))
        return false;
      for (std::size_t i = 0; i < size / sizeof(AudioObjectID); ++i)
        if (number<std::int32_t>(objects.at(i), property::kProcessPID) == client.pid()) found = objects.at(i);
      return found != kAudioObjectUnknown;
    }));
    return found;
  }

  std::optional<std::string> nameOf(AudioObjectID device) {
    std::optional<std::string> name;
    hardware_->getPropertyData(device, global(property::kDeviceUID), name);
    return name;
  }

  /// A tap on a process with a started block that plays it `gain` times as loud.
  struct Chain {
    AudioObjectID tap = 0;
    AudioObjectID aggregate = 0;
    IOProcID ioProc = 0;
  };

  Chain start(AudioObjectID process, const std::string& device, float gain,
              const std::vector<std::string>& bundleIDs = {}) {
    Chain chain;
    auto description = contract::tapOn(process, TapMuteBehavior::muted);
    description.bundleIDs = bundleIDs;
    EXPECT_EQ(timed([&] { return hardware_->createProcessTap(description, chain.tap); }), kNoError);
    std::optional<std::string> uid;
    hardware_->getPropertyData(chain.tap, global(property::kTapUID), uid);
    EXPECT_EQ(timed([&] {
                return hardware_->createAggregateDevice(contract::aggregateOf(device, uid.value_or("")),
                                                        chain.aggregate);
              }),
              kNoError);
    const auto block = [gain](const AudioTimeStamp&, const AudioBufferList& input, const AudioTimeStamp&,
                              AudioBufferList& output, const AudioTimeStamp&) {
      for (std::size_t side = 0; side < output.buffers.size(); ++side) {
        const auto* from = static_cast<const float*>(input.buffers[side].data);
        auto* to = static_cast<float*>(output.buffers[side].data);
        if (from == nullptr || to == nullptr) continue;
        std::transform(from, from + output.buffers[side].sizeBytes / sizeof(float), to,
                       [gain](float sample) { return sample * gain; });
      }
    };
    EXPECT_EQ(timed([&] { return hardware_->createIOProcID(chain.aggregate, {}, block, chain.ioProc); }),
              kNoError);
    EXPECT_EQ(timed([&] { return hardware_->deviceStart(chain.aggregate, chain.ioProc); }), kNoError);
    return chain;
  }

  void destroy(const Chain& chain) {
    EXPECT_EQ(timed([&] { return hardware_->destroyIOProcID(chain.aggregate, chain.ioProc); }), kNoError);
    EXPECT_EQ(timed([&] { return hardware_->destroyAggregateDevice(chain.aggregate); }), kNoError);
    EXPECT_EQ(timed([&] { return hardware_->destroyProcessTap(chain.tap); }), kNoError);
  }

  /// No call waits for streams or devices.
  template <class Call> OSStatus timed(Call&& call) {
    const auto begin = std::chrono::steady_clock::now();
    const OSStatus outcome = call();
    EXPECT_LT(std::chrono::steady_clock::now() - begin, 250ms);
    return outcome;
  }

  PrivateSession session_;
  NamedByClient identity_;
  std::optional<pipewire::PipeWireHardware> hardware_;
};

} // namespace

TEST_F(BackEnd, AMutedProgramIsNotHeardWhileItsDeviceChanges) {
  ToneClient client(session_);
  client.open("tone", {.tone = kTone});
  const Listener speakers(session_, "Speakers");
  const Listener headphones(session_, "Headphones");
  ASSERT_TRUE(speakers.waitForTone(kTone, kToleranceDB));
  const AudioObjectID process = processOf(client);
  Chain chain = start(process, "Headphones", 0.0F);
  ASSERT_TRUE(speakers.waitForExactZeros(100ms));
  const auto mark = speakers.mark();
  const auto markOfOther = headphones.mark();
  for (const std::string device : {"Speakers", "Headphones", "Headphones", "Speakers", "Headphones"}) {
    ASSERT_EQ(hardware_->beginConfiguration(), kNoError);
    EXPECT_EQ(hardware_->beginConfiguration(), status::kIllegalOperation);
    destroy(chain);
    chain = start(process, device, 0.0F);
    EXPECT_EQ(timed([&] { return hardware_->commitConfiguration(); }), kNoError);
  }
  const auto isSilent = [](const Recording& heard) {
    return !heard.left.empty() &&
           std::ranges::all_of(heard.left, [](float sample) { return sample == 0.0F; });
  };
  EXPECT_TRUE(isSilent(speakers.since(mark)));
  EXPECT_TRUE(isSilent(headphones.since(markOfOther)));
  destroy(chain);
  EXPECT_TRUE(speakers.waitForTone(kTone, kToleranceDB));
  EXPECT_FALSE(holdsAnythingOfOurs(session_.graph()));
}

TEST_F(BackEnd, AMoveElsewhereIsToldAndTheStreamStaysInItsTap) {
  ToneClient client(session_);
  const auto stream = client.open("tone", {.tone = kTone});
  const Listener speakers(session_, "Speakers");
  const Listener headphones(session_, "Headphones");
  ASSERT_TRUE(speakers.waitForTone(kTone, kToleranceDB));
  const AudioObjectID process = processOf(client);
  std::atomic<int> calls = 0;
  PropertyListenerID listener = 0;
  ASSERT_EQ(hardware_->addPropertyListener(
                process, global(property::kProcessChosenDevice),
                [&](AudioObjectID, const PropertyAddress&) { ++calls; }, listener),
            kNoError);
  const Chain chain = start(process, "Speakers", 0.5F);
  ASSERT_TRUE(speakers.waitForTone({.frequency = 1000, .amplitude = 0.2}, kToleranceDB));
  EXPECT_EQ(calls, 0);
  GraphConnection mixer(session_.socketPath());
  static_cast<void>(mixer.snapshot(std::chrono::steady_clock::now() + 20s));
  for (const std::string target : {"Headphones", "-1"}) {
    SCOPED_TRACE(target);
    calls = 0;
    mixer.setMetadata("default", stream, "target.object", target == "-1" ? "Spa:Id" : "Spa:String", target);
    static_cast<void>(mixer.snapshot(std::chrono::steady_clock::now() + 20s)); // it has arrived
    EXPECT_TRUE(waitUntil([&] { return calls > 0; }));
    const auto chosen = number<AudioObjectID>(process, property::kProcessChosenDevice).value_or(0);
    EXPECT_EQ(nameOf(chosen).value_or("-1"), target);
    EXPECT_TRUE(speakers.waitForTone({.frequency = 1000, .amplitude = 0.2}, kToleranceDB));
    EXPECT_TRUE(headphones.waitForExactZeros(100ms));
  }
  EXPECT_EQ(hardware_->removePropertyListener(listener), kNoError);
  destroy(chain);
}

TEST_F(BackEnd, WhatCannotBeMovedIsLeftAloneAndSaidSo) {
  ToneClient client(session_);
  client.open("tone", {.tone = kTone});
  const Listener speakers(session_, "Speakers");
  ASSERT_TRUE(speakers.waitForTone(kTone, kToleranceDB));
  constexpr Tone kFixed{.frequency = 1700, .amplitude = 0.2};
  client.open("fixed", {.tone = kFixed, .properties = {{"node.dont-reconnect", "true"}}});
  ASSERT_TRUE(speakers.waitForTone(kFixed, kToleranceDB));
  const Chain chain = start(processOf(client), "Speakers", 0.5F);
  EXPECT_TRUE(speakers.waitForTone({.frequency = 1000, .amplitude = 0.2}, kToleranceDB));
  EXPECT_TRUE(speakers.waitForTone(kFixed, kToleranceDB));
  EXPECT_EQ(number<std::uint32_t>(chain.tap, property::kTapIsPartial), 1U);
  destroy(chain);
  EXPECT_TRUE(speakers.waitForTone(kTone, kToleranceDB));
}

TEST_F(BackEnd, AProcessOfTheSameBundleIDJoinsBeforeItIsHeard) {
  const ToneClientOptions named{.properties = {{"application.name", "Player"}}};
  ToneClient first(session_, named);
  first.open("tone", {.tone = kTone});
  const Listener speakers(session_, "Speakers");
  ASSERT_TRUE(speakers.waitForTone(kTone, kToleranceDB));
  const Chain chain = start(processOf(first), "Speakers", 0.0F, {"Player"});
  ASSERT_TRUE(speakers.waitForExactZeros(100ms));
  const auto mark = speakers.mark();
  ToneClient second(session_, named);
  second.open("tone", {.tone = {.frequency = 1700, .amplitude = 0.2}});
  ASSERT_TRUE(speakers.waitForFrames(mark, kSampleRate, 20s));
  EXPECT_TRUE(std::ranges::all_of(speakers.since(mark).left, [](float sample) { return sample == 0.0F; }));
  destroy(chain);
}

} // namespace sonvel::sound
