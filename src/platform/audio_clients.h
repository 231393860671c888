#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace sonvel {

/// What the sound server knows of a connected program.
struct AudioClient {
  std::int32_t processID = 0;               ///< 0 if unknown
  std::optional<std::string> sandboxAppID;  ///< the sandbox's application ID; the server restricts its access
  std::optional<std::string> applicationID; ///< `application.id`, set by the program
  std::optional<std::string> applicationName; ///< `application.name`, set by the program
  std::optional<std::string> processBinary;   ///< `application.process.binary`, set by the program

  bool operator==(const AudioClient&) const = default;
};

/// The programs connected to the sound server.
class AudioClients {
 public:
  virtual ~AudioClients() = default;

  /// A snapshot in the order of connection, without the server's own clients and this program. Empty without
  /// a server. Any thread; does not wait for the server.
  virtual std::vector<AudioClient> audioClients() const = 0;
};

} // namespace sonvel
