#pragma once

#include "platform/audio_hardware.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>

namespace sonvel::contract {

/// UIDs and names of the initial devices. The first is the default device.
inline constexpr const char* kSpeakers = "Speakers";
inline constexpr const char* kHeadphones = "Headphones";

struct Tone {
  double frequencyHz = 0.0; ///< tones heard together differ by at least 100 Hz
  double amplitude = 0.0;   ///< full scale is 1; when waiting for a tone, 0 means that it must not be heard
};

/// An audio back end in a test environment: programs that play, and listeners at its two stereo devices,
/// which have a main volume and one per channel. It starts without programs and ends its own when destroyed.
///
/// Effects of programs and device changes may come a little later: wait for them. What is impossible throws.
class AudioSystemUnderTest {
 public:
  virtual ~AudioSystemUnderTest() = default;

  virtual AudioHardware& hardware() = 0;

  /// Starts a program that plays a tone to the default device. Returns its pid. An empty bundle ID means
  /// none.
  virtual std::int32_t startProgram(Tone tone, const std::string& bundleID) = 0;

  /// Opens another stream in the program; a fixed one must not be moved.
  virtual void openStream(std::int32_t pid, Tone tone, bool isFixed) = 0;

  /// Pauses or resumes the program's first stream.
  virtual void setPlaying(std::int32_t pid, bool isPlaying) = 0;

  virtual void endProgram(std::int32_t pid) = 0;

  virtual void setDefaultDevice(const std::string& device) = 0;

  /// Waits until the tone is heard on both channels of the device, within 0.05 dB; otherwise reports what is
  /// heard.
  virtual testing::AssertionResult becomesAudible(const std::string& device, Tone tone) = 0;

  /// Waits until the device gets only zeros.
  virtual testing::AssertionResult becomesSilent(const std::string& device) = 0;

  /// Whether both devices get only zeros while `act` runs.
  virtual bool isSilentDuring(const std::function<void()>& act) = 0;

  /// Runs the system until `isSo`. False after a time that is long for the system.
  virtual bool waitUntil(const std::function<bool()>& isSo) = 0;

  /// Waits for several I/O cycles.
  virtual void letCyclesPass() = 0;

  /// Waits until the audio system has no object made through hardware(); false if some remain.
  virtual bool nothingOfOursIsLeft() = 0;
};

/// Defined by the program that these tests are linked into.
std::unique_ptr<AudioSystemUnderTest> makeSystemUnderTest();

} // namespace sonvel::contract
