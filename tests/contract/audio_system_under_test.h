#pragma once

#include "platform/audio_hardware.h"

#include <functional>
#include <memory>
#include <ostream>
#include <string>

namespace sonvel::contract {

struct Tone {
  double frequencyHz = 0.0;
  double amplitude = 0.0; ///< full scale is 1
};

/// An audio back end with a world around it: programs that play, and ears at its devices. It begins with two
/// stereo devices named "Speakers" (the default) and "Headphones", both with a main volume and one for each
/// channel, and without programs. It ends its programs when it is destroyed.
///
/// Only what a real system can offer is offered here, so whatever a program or a change of a device brings
/// about may come a little later: wait for it. What can't be done at all throws.
class AudioSystemUnderTest {
 public:
  virtual ~AudioSystemUnderTest() = default;

  virtual AudioHardware& hardware() = 0;

  /// Starts a program that plays a tone to the default device. Returns its pid.
  virtual std::int32_t startProgram(Tone tone) = 0;

  /// The program opens one more stream beside those it has.
  virtual void openStream(std::int32_t pid, Tone tone) = 0;

  /// The program goes on to run with its streams paused, and plays on.
  virtual void pauseProgram(std::int32_t pid) = 0;
  virtual void resumeProgram(std::int32_t pid) = 0;

  virtual void endProgram(std::int32_t pid) = 0;

  virtual std::string deviceUID(const std::string& deviceName) = 0;

  virtual void setDefaultDevice(const std::string& deviceUID) = 0;

  /// The amplitude of a tone at the device of late, before the device's own volume. Others at least 100 Hz
  /// away don't disturb it.
  virtual double loudness(const std::string& deviceUID, double frequencyHz) = 0;

  /// Whether nothing but zeros came to the device of late.
  virtual bool exactZeros(const std::string& deviceUID) = 0;

  /// Lets the system run until `isSo`. False if it doesn't come about in a time that is long for the system.
  virtual bool waitUntil(const std::function<bool()>& isSo) = 0;

  /// Lets several I/O cycles of the device go by.
  virtual void letCyclesPass(const std::string& deviceUID) = 0;

  /// Whether the audio system holds no object that was made through hardware().
  virtual bool nothingOfOursIsLeft() = 0;
};

/// One back end for the suite to run on.
struct BackEnd {
  std::string name;
  std::function<std::unique_ptr<AudioSystemUnderTest>()> make;

  friend std::ostream& operator<<(std::ostream& out, const BackEnd& backEnd) { return out << backEnd.name; }
};

} // namespace sonvel::contract
