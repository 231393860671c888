#pragma once

#include "contract/audio_system_under_test.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstring>

namespace sonvel::contract {

/// What the block of an IOProc does and saw. The block writes it, the test reads it.
struct BlockState {
  explicit BlockState(float factor)
      : gain(factor) {}

  const float gain; ///< the block's output is its input times this
  std::atomic<int> calls = 0;
  std::atomic<float> inputPeak = 0.0F; ///< of the last call
};

/// A block that plays its first input buffer times the gain; keeps `state`.
IOProcBlock playingBlock(std::shared_ptr<BlockState> state);

/// A tap on a process, joined with a device, with a playing block on it that has been started. Reports
/// whatever step fails, and removes what is left of itself.
class TapChain {
 public:
  struct Options {
    TapMuteBehavior muteBehavior = TapMuteBehavior::muted;
    float gain = 1.0F;
    bool isStarted = true;
  };

  TapChain(AudioHardware& hardware, AudioObjectID process, const std::string& deviceUID, Options options);
  ~TapChain();
  TapChain(const TapChain&) = delete;
  TapChain& operator=(const TapChain&) = delete;

  /// Takes it down step by step, in the order IOProc, aggregate device, tap.
  void destroy();

  AudioObjectID tap = kAudioObjectUnknown;
  AudioObjectID aggregate = kAudioObjectUnknown;
  IOProcID ioProc = 0;
  std::shared_ptr<BlockState> state;

 private:
  AudioHardware& hardware_;
};

/// How a private tap on one process and an aggregate device for it are described.
TapDescription tapOn(AudioObjectID process, TapMuteBehavior muteBehavior);
AggregateDeviceDescription aggregateOf(const std::string& deviceUID, const std::string& tapUID);

/// The base of all contract tests.
class AudioContract : public testing::TestWithParam<BackEnd> {
 protected:
  void SetUp() override { system_ = GetParam().make(); }

  AudioSystemUnderTest& system() { return *system_; }

  AudioHardware& hardware() { return system_->hardware(); }

  std::string speakers() { return system_->deviceUID("Speakers"); }

  std::string headphones() { return system_->deviceUID("Headphones"); }

  /// A number; none if it can't be read.
  template <class T> std::optional<T> number(AudioObjectID object, const PropertyAddress& address) {
    T value = 0;
    std::uint32_t size = 0;
    if (hardware().getPropertyData(object, address, size, std::as_writable_bytes(std::span(&value, 1))))
      return std::nullopt;
    return size == sizeof value ? std::optional(value) : std::nullopt;
  }

  std::vector<AudioObjectID> list(std::uint32_t selector);
  std::optional<std::string> text(AudioObjectID object, std::uint32_t selector);

  /// 0 if there is none.
  AudioObjectID processWithPID(std::int32_t pid);
  AudioObjectID deviceWithUID(const std::string& uid);

  /// Starts a program and waits until it is heard at its device. Returns its process object.
  AudioObjectID startAudibleProgram(Tone tone);

  bool isPlaying(AudioObjectID process);

  /// Waits until the tone is heard at the device, within `toleranceDB`, and tells what was heard if not.
  testing::AssertionResult becomesAudible(const std::string& deviceUID, Tone tone, double toleranceDB = 0.05);
  testing::AssertionResult becomesSilent(const std::string& deviceUID);

  /// Waits until the block is called with such a peak.
  testing::AssertionResult blockHears(const BlockState& state, double amplitude);

  /// Waits until the block has been called again twice.
  testing::AssertionResult blockRuns(const BlockState& state);

 private:
  std::unique_ptr<AudioSystemUnderTest> system_;
};

constexpr PropertyAddress global(std::uint32_t selector) noexcept {
  return {.selector = selector, .scope = scope::kGlobal, .element = kElementMain};
}

constexpr PropertyAddress volume(std::uint32_t element) noexcept {
  return {.selector = property::kDeviceVolumeScalar, .scope = scope::kOutput, .element = element};
}

/// An ID that no system gives away soon.
inline constexpr AudioObjectID kUnheardOfObject = 0x7FFF'FF00;
inline constexpr IOProcID kUnheardOfIOProc = 0x7FFF'FF00;

} // namespace sonvel::contract
