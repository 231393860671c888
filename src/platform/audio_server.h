#pragma once

#include <functional>

namespace sonvel {

/// This program's connection to the sound server, and what the server lets it do.
class AudioServer {
 public:
  /// Whether this program may take other programs' streams over and play them.
  enum class Rights {
    unknown, ///< no server has told yet
    granted,
    restricted,
  };

  enum class Connection {
    connecting, ///< no server has been there yet
    connected,
    lost, ///< there was one; it is tried again for as long as it takes
  };

  virtual ~AudioServer() = default;

  /// What a server told last; a lost connection changes nothing in it. Any thread; does not block.
  virtual Rights rights() const = 0;

  /// Any thread; does not block.
  virtual Connection connection() const = 0;

  /// Has `callback` called after each change of either, on a thread of the audio system and one call at a
  /// time. It may ask for both, must not block and must not call the audio system. It takes the place of the
  /// one before, which is not running and never called again when this returns; null: none is called. Any
  /// thread, but not from inside the callback.
  virtual void onChange(std::function<void()> callback) = 0;
};

} // namespace sonvel
