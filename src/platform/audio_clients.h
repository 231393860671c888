#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace sonvel {

/// What the sound server knows of a program that is connected to it.
struct AudioClient {
  std::int32_t processID = 0;                 ///< 0 where it can't be known
  std::optional<std::string> sandboxAppID;    ///< application of a sandbox, whose access the server restricts
  std::optional<std::string> applicationID;   ///< `application.id`, as the program claims
  std::optional<std::string> applicationName; ///< `application.name`, as the program claims
  std::optional<std::string> processBinary;   ///< `application.process.binary`, as the program claims

  bool operator==(const AudioClient&) const = default;
};

/// The programs that are connected to the sound server.
class AudioClients {
 public:
  virtual ~AudioClients() = default;

  /// A snapshot in the order of the clients' arrival, without the server's own and this program's. Empty
  /// while there is no server. Any thread; does not block on the server.
  virtual std::vector<AudioClient> audioClients() const = 0;
};

} // namespace sonvel
