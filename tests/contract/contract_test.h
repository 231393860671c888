#pragma once

#include "contract/audio_system_under_test.h"

#include <atomic>
#include <cstring>

namespace sonvel::contract {

/// What the block of an IOProc does and saw. The block writes it, the test reads it.
struct BlockState {
  explicit BlockState(float factor)
      : gain(factor) {}

  std::atomic<float> gain; ///< the block's output is its input times this; 0: it writes nothing
  std::atomic<int> calls = 0;
  std::atomic<float> inputPeak = 0.0F; ///< of the last call
};

/// A block that plays its input times the gain; keeps `state`.
IOProcBlock playingBlock(std::shared_ptr<BlockState> state);

/// A tap on a process, joined with a device, with a playing block on it. Reports whatever step fails, and
/// removes what is left of itself.
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
TapDescription tapOn(AudioObjectID process, TapMuteBehavior muteBehavior = TapMuteBehavior::muted);
AggregateDeviceDescription aggregateOf(const std::string& device, const std::string& tapUID);

/// The base of all contract tests.
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

  AudioObjectID defaultDevice();
  bool isPlaying(AudioObjectID process);

  /// Starts a program and waits until it is heard at the default device.
  Program startAudibleProgram(Tone tone, const std::string& bundleID = "");

  /// Waits until the block is called with a peak between these.
  testing::AssertionResult blockHears(const BlockState& state, double least, double most);

  /// Waits until the block has been called again twice.
  testing::AssertionResult blockRuns(const BlockState& state);

  /// Whether the block is not called any more and nobody but the test keeps it.
  testing::AssertionResult blockIsGone(const std::shared_ptr<BlockState>& state);

 private:
  std::unique_ptr<AudioSystemUnderTest> system_ = makeSystemUnderTest();
};

constexpr PropertyAddress global(std::uint32_t selector) noexcept {
  return {.selector = selector, .scope = scope::kGlobal, .element = kElementMain};
}

/// An ID that no system gives away soon.
inline constexpr AudioObjectID kUnheardOfObject = 0x7FFF'FF00;
inline constexpr IOProcID kUnheardOfIOProc = 0x7FFF'FF00;

} // namespace sonvel::contract
