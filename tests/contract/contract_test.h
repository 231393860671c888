#pragma once

#include "contract/audio_system_under_test.h"

#include <atomic>
#include <cstring>

namespace sonvel::contract {

/// The behaviour and observations of an IOProc's block. Written by the block, read by the test.
struct BlockState {
  explicit BlockState(float factor)
      : gain(factor) {}

  std::atomic<float> gain; ///< output = input times this; 0: writes nothing
  std::atomic<int> calls = 0;
  std::atomic<float> inputPeak = 0.0F; ///< of the last call
};

/// A block that plays its input times the gain; keeps `state`.
IOProcBlock playingBlock(std::shared_ptr<BlockState> state);

/// A tap on a process, an aggregate device, and a playing block on it. Reports a failed step, and removes
/// what is left at the end.
class TapChain {
 public:
  struct Options {
    TapMuteBehavior muteBehavior = TapMuteBehavior::muted;
    float gain = 1.0F;
    bool isStarted = true;
    std::vector<std::string> bundleIDs = {};
  };

  TapChain(AudioHardware& hardware, AudioObjectID process, const std::string& device, Options options);
  ~TapChain();
  TapChain(const TapChain&) = delete;
  TapChain& operator=(const TapChain&) = delete;

  /// Removes the IOProc, the aggregate device and the tap, in this order.
  void destroy();

  AudioObjectID tap = kAudioObjectUnknown;
  AudioObjectID aggregate = kAudioObjectUnknown;
  IOProcID ioProc = 0;
  std::shared_ptr<BlockState> state;

 private:
  AudioHardware& hardware_;
};

/// Descriptions of a private tap on one process, and of its aggregate device.
TapDescription tapOn(AudioObjectID process, TapMuteBehavior muteBehavior = TapMuteBehavior::muted);
AggregateDeviceDescription aggregateOf(const std::string& device, const std::string& tapUID);

/// Base of all contract tests.
class AudioContract : public testing::Test {
 protected:
  struct Program {
    std::int32_t pid;
    AudioObjectID process;
  };

  AudioSystemUnderTest& system() { return *system_; }

  AudioHardware& hardware() { return system_->hardware(); }

  TapChain tap(AudioObjectID process, const std::string& device, TapChain::Options options = {}) {
    return {hardware(), process, device, std::move(options)};
  }

  /// Reads a number; none if unreadable.
  template <class T> std::optional<T> number(AudioObjectID object, const PropertyAddress& address) {
    T value = 0;
    std::uint32_t size = 0;
    if (hardware().getPropertyData(object, address, size, std::as_writable_bytes(std::span(&value, 1))))
      return std::nullopt;
    return size == sizeof value ? std::optional(value) : std::nullopt;
  }

  std::vector<AudioObjectID> list(std::uint32_t selector);
  std::optional<std::string> text(AudioObjectID object, std::uint32_t selector);

  /// 0 if not found.
  AudioObjectID processWithPID(std::int32_t pid);
  AudioObjectID deviceWithUID(const std::string& uid);

  AudioObjectID defaultDevice();
  bool isPlaying(AudioObjectID process);

  /// Starts a program and waits until it is heard at the default device.
  Program startAudibleProgram(Tone tone, const std::string& bundleID = "");

  /// Waits until the block is called with a peak in this range.
  testing::AssertionResult blockHears(const BlockState& state, double least, double most);

  /// Waits for two more calls of the block.
  testing::AssertionResult blockRuns(const BlockState& state);

  /// Whether the block is no longer called, and only the test keeps its state.
  testing::AssertionResult blockIsGone(const std::shared_ptr<BlockState>& state);

 private:
  std::unique_ptr<AudioSystemUnderTest> system_ = makeSystemUnderTest();
};

constexpr PropertyAddress global(std::uint32_t selector) noexcept {
  return {.selector = selector, .scope = scope::kGlobal, .element = kElementMain};
}

/// An object ID that no system uses soon.
inline constexpr AudioObjectID kUnheardOfObject = 0x7FFF'FF00;
inline constexpr IOProcID kUnheardOfIOProc = 0x7FFF'FF00;

} // namespace sonvel::contract
