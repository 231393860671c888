#include "pipewire/object_reading.h"

#include "pipewire/pod_reading.h"

#include <pipewire/keys.h>
#include <spa/utils/json.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <string_view>
#include <unistd.h>

namespace sonvel::pipewire {

namespace {

NodeKind kindOf(const std::optional<std::string>& mediaClass) {
  if (mediaClass == "Stream/Output/Audio") return NodeKind::outputStream;
  if (mediaClass == "Audio/Sink" || mediaClass == "Audio/Duplex") return NodeKind::sink;
  if (mediaClass == "Audio/Source") return NodeKind::source;
  return NodeKind::other;
}

std::string ownHostName() {
  std::array<char, 256> name{};
  gethostname(name.data(), name.size() - 1);
  return name.data();
}

/// The application of a sandbox. Only the server can restrict a client's access; without that, the
/// application ID is just a claim.
std::optional<std::string> sandboxOf(const spa_dict* properties) {
  const auto access = textOf(properties, PW_KEY_ACCESS);
  if (!access || *access == "unrestricted" || *access == "default") return std::nullopt;
  return textOf(properties, "pipewire.access.portal.app_id");
}

/// The name of the sound system's own program in this process, if it is one. Decided by the executable's path
/// in folders that only administrators write to; the name alone could be claimed by any program.
std::optional<std::string> soundSystemProgramOf(std::int32_t pid) {
  constexpr std::array<std::string_view, 4> kFolders{"/usr/", "/bin/", "/nix/store/", "/gnu/store/"};
  constexpr std::array<std::string_view, 4> kPrograms{"pipewire", "pipewire-pulse", "wireplumber",
                                                      "pipewire-media-session"};
  std::array<char, 4096> target{};
  const auto link = "/proc/" + std::to_string(pid) + "/exe";
  const ssize_t length = readlink(link.c_str(), target.data(), target.size());
  if (pid <= 0 || length <= 0) return std::nullopt;
  std::string_view path(target.data(), static_cast<std::size_t>(length));
  if (constexpr std::string_view kDeleted = " (deleted)"; path.ends_with(kDeleted)) // replaced by an upgrade
    path.remove_suffix(kDeleted.size());
  const auto name = path.substr(path.rfind('/') + 1);
  const bool isInstalled =
      std::ranges::any_of(kFolders, [&](auto folder) { return path.starts_with(folder); });
  if (!isInstalled || std::ranges::find(kPrograms, name) == kPrograms.end()) return std::nullopt;
  return std::string(name);
}

/// The process of a client. For a program on the PulseAudio socket only the claimed process ID is known,
/// because the server vouches for its PulseAudio helper instead. A claim from another machine or a sandbox
/// means nothing here: then 0.
std::int32_t processOf(const spa_dict* properties, std::int32_t vouched, bool isPulse) {
  if (!isPulse) return vouched;
  if (sandboxOf(properties)) return 0;
  const auto host = textOf(properties, "application.process.host");
  if (host && *host != ownHostName()) return 0;
  return static_cast<std::int32_t>(numberOf(properties, PW_KEY_APP_PROCESS_ID).value_or(0));
}

} // namespace

Node readNode(const spa_dict* properties) {
  Node node;
  node.serial = numberOf(properties, PW_KEY_OBJECT_SERIAL).value_or(0);
  node.client = numberOf(properties, PW_KEY_CLIENT_ID);
  node.kind = kindOf(textOf(properties, PW_KEY_MEDIA_CLASS));
  node.name = textOf(properties, PW_KEY_NODE_NAME).value_or("");
  node.description = textOf(properties, PW_KEY_NODE_DESCRIPTION).value_or("");
  return node;
}

Port readPort(const spa_dict* properties) {
  Port port;
  port.node = numberOf(properties, PW_KEY_NODE_ID).value_or(0);
  port.direction =
      textOf(properties, PW_KEY_PORT_DIRECTION) == "out" ? PortDirection::out : PortDirection::in;
  port.isMonitor = isTrue(properties, PW_KEY_PORT_MONITOR);
  port.channel = textOf(properties, PW_KEY_AUDIO_CHANNEL).value_or("");
  port.index = numberOf(properties, PW_KEY_PORT_ID).value_or(0);
  return port;
}

Link readLink(const spa_dict* properties) {
  return {.client = numberOf(properties, PW_KEY_CLIENT_ID),
          .outputNode = numberOf(properties, PW_KEY_LINK_OUTPUT_NODE).value_or(0),
          .outputPort = numberOf(properties, PW_KEY_LINK_OUTPUT_PORT).value_or(0),
          .inputNode = numberOf(properties, PW_KEY_LINK_INPUT_NODE).value_or(0),
          .inputPort = numberOf(properties, PW_KEY_LINK_INPUT_PORT).value_or(0)};
}

void readClient(const spa_dict* properties, Client& client) {
  client.isKnown = true;
  client.isPulseConnection = textOf(properties, PW_KEY_CLIENT_API) == "pipewire-pulse";
  client.vouchedPID = static_cast<std::int32_t>(numberOf(properties, PW_KEY_SEC_PID).value_or(0));
  client.facts.processID = processOf(properties, client.vouchedPID, client.isPulseConnection);
  client.facts.sandboxAppID = sandboxOf(properties);
  client.facts.applicationID = textOf(properties, PW_KEY_APP_ID);
  client.facts.applicationName = textOf(properties, PW_KEY_APP_NAME);
  client.facts.processBinary = textOf(properties, PW_KEY_APP_PROCESS_BINARY);
  // The session manager, the server's helpers and this program play no application's sound. Programs on the
  // PulseAudio socket share the vouched process with the server's helper.
  const auto program = soundSystemProgramOf(client.vouchedPID);
  const bool isHelper = program && (!client.isPulseConnection || client.facts.processID == client.vouchedPID);
  client.isSoundServer = client.vouchedPID == getpid() || isHelper;
  client.isSessionManager = program == "wireplumber" || program == "pipewire-media-session";
}

std::string nameInJSON(const char* text) {
  std::array<spa_json, 2> json{};
  std::array<char, 32> key{};
  std::array<char, 1024> name{};
  spa_json_init(json.data(), text, std::strlen(text));
  if (spa_json_enter_object(json.data(), &json[1]) <= 0) return {};
  while (spa_json_get_string(&json[1], key.data(), key.size()) > 0) {
    if (std::strcmp(key.data(), "name") == 0)
      return spa_json_get_string(&json[1], name.data(), name.size()) > 0 ? name.data() : "";
    const char* skipped = nullptr;
    if (spa_json_next(&json[1], &skipped) <= 0) break;
  }
  return {};
}

} // namespace sonvel::pipewire
