#pragma once

#include "session/player.h"
#include "session/private_session.h"

#include <chrono>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace sonvel::session {

inline constexpr std::size_t kAnalysedFrames = 16384; // a third of a second

/// Frames heard one after another, without a gap when complete.
struct Recording {
  std::vector<float> left;
  std::vector<float> right;
  std::uint64_t position = 0; // the graph's clock position (frames of the sink's driver) of the first frame
  bool complete = true; // false: some were lost (late, unlinked, forgotten or of another quantum than told)
};

enum class Wake {
  keepRunning, // the sink runs as long as we listen, so that silence is heard as zeros
  passive,     // the sink sleeps when nothing plays, and then nothing is heard
};

/// What a sink plays, sample by sample, taken from its monitor at 48 kHz. It makes its own links, without the
/// session manager's help, and makes them again when the sink comes back. It does not outlive the PipeWire it
/// was made on: after a restart, make another.
///
/// Safe to use from any one thread. Keeps the last two minutes.
class Listener {
 public:
  using Milliseconds = std::chrono::milliseconds;

  /// Returns when the first samples have come (Wake::passive: when it is linked); throws std::runtime_error
  /// when that takes longer than 20 seconds.
  Listener(const PrivateSession& session, const std::string& sink, Wake wake = Wake::keepRunning);
  ~Listener();
  Listener(const Listener&) = delete;
  Listener& operator=(const Listener&) = delete;

  /// How many frames have been heard so far: a mark for since().
  [[nodiscard]] std::uint64_t mark() const;
  /// All that was heard from this mark on.
  [[nodiscard]] Recording since(std::uint64_t mark) const;
  /// Blocks until so many frames were heard from the mark on; false after the time given.
  [[nodiscard]] bool waitForFrames(std::uint64_t mark, std::uint64_t frames, Milliseconds within) const;

  /// The amplitude of a tone in the last frames of the left channel (or the right).
  [[nodiscard]] double toneAmplitude(double frequency, int channel = 0,
                                     std::size_t frames = kAnalysedFrames) const;
  /// Blocks until both channels carry this tone, in frames heard after the call; false after the time given.
  [[nodiscard]] bool waitForTone(Tone tone, double toleranceDB,
                                 Milliseconds within = std::chrono::seconds{20}) const;
  /// Blocks until so much exact silence was heard after the call in both channels; false after the time
  /// given.
  [[nodiscard]] bool waitForExactZeros(Milliseconds duration,
                                       Milliseconds within = std::chrono::seconds{20}) const;

  /// How often samples were lost since the start.
  [[nodiscard]] std::uint64_t losses() const;
  /// Whether the sink's monitor is linked to us now.
  [[nodiscard]] bool linked() const;

 private:
  class Implementation;
  std::unique_ptr<Implementation> implementation_;
};

} // namespace sonvel::session
