#pragma once

#include "platform/audio_hardware.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>

namespace sonvel::contract {

/// The UIDs and names of the devices that there are at the start. The first is the default device.
inline constexpr const char* kSpeakers = "Speakers";
inline constexpr const char* kHeadphones = "Headphones";

struct Tone {
  double frequencyHz = 0.0; ///< tones that are heard together are at least 100 Hz apart
  double amplitude = 0.0;   ///< full scale is 1; as a tone that is waited for, 0 means that it isn't heard
};

/// An audio back end with a world around it: programs that play, and ears at its two stereo devices, which
/// have a main volume and one for each channel. It starts without programs, and ends those it has when it is
/// destroyed.
///
/// What a program does, and a change of a device, may take effect a little later: wait for it. What can't be
/// done at all throws.
class AudioSystemUnderTest {
 public:
  virtual ~AudioSystemUnderTest() = default;

  virtual AudioHardware& hardware() = 0;

  /// Starts a program that plays a tone to the default device. Returns its pid. An empty bundle ID is none.
  virtual std::int32_t startProgram(Tone tone, const std::string& bundleID) = 0;

  /// The program opens one more stream; a fixed one may be moved by nobody.
  virtual void openStream(std::int32_t pid, Tone tone, bool isFixed) = 0;

  /// Pauses the first stream of a program, or lets it play on.
  virtual void setPlaying(std::int32_t pid, bool isPlaying) = 0;

  virtual void endProgram(std::int32_t pid) = 0;

  virtual void setDefaultDevice(const std::string& device) = 0;

  /// Waits until the tone is heard at the device on both channels, within 0.05 dB; tells what is heard if
  /// not.
  virtual testing::AssertionResult becomesAudible(const std::string& device, Tone tone) = 0;

  /// Waits until nothing but zeros comes to the device.
  virtual testing::AssertionResult becomesSilent(const std::string& device) = 0;

  /// Whether nothing but zeros comes to both devices while `act` runs.
  virtual bool isSilentDuring(const std::function<void()>& act) = 0;

  /// Lets the system run until `isSo`. False if it doesn't come about in a time that is long for the system.
  virtual bool waitUntil(const std::function<bool()>& isSo) = 0;

  /// Lets several I/O cycles go by.
  virtual void letCyclesPass() = 0;

  /// Whether the audio system comes to hold no object that was made through hardware().
  virtual bool nothingOfOursIsLeft() = 0;
};

/// The one of the program that these tests are linked into.
std::unique_ptr<AudioSystemUnderTest> makeSystemUnderTest();

} // namespace sonvel::contract
