#pragma once

#include <functional>

namespace sonvel {

/// This program's connection to the sound server, and the rights that it has there.
class AudioServer {
 public:
  /// Whether this program may take over other programs' streams and play them.
  enum class Rights {
    unknown, ///< no server has answered yet
    granted,
    restricted,
  };

  enum class Connection {
    connecting, ///< no server has been connected yet
    connected,
    lost, ///< the connection was lost; retried without limit
  };

  virtual ~AudioServer() = default;

  /// The last server's answer; a lost connection does not change it. Any thread; does not block.
  virtual Rights rights() const = 0;

  /// Any thread; does not block.
  virtual Connection connection() const = 0;

  /// Calls `callback` after each change of either, on a thread of the audio system, one call at a time. The
  /// callback may read both; it must not block and must not call the audio system. It replaces an earlier
  /// callback, which is not running and is never called again once this returns; null removes it. Any thread,
  /// but not from the callback.
  virtual void onChange(std::function<void()> callback) = 0;
};

} // namespace sonvel
