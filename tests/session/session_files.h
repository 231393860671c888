#pragma once

#include <filesystem>
#include <map>
#include <string>

namespace sonvel::session {

/// The folders of a session below its own one.
struct SessionFolders {
  std::filesystem::path runtime;
  std::filesystem::path config;
  std::filesystem::path state;
  std::filesystem::path data;
  std::filesystem::path cache;
  std::filesystem::path home;
  std::filesystem::path logs;
  std::filesystem::path programs; // copies of programs under other names
  std::filesystem::path tones;

  explicit SessionFolders(const std::filesystem::path& root);
};

/// Makes the folders, and the configuration that sets the daemons of a session apart from a desktop's: fixed
/// quantum, the first sinks, no hardware, no services that the bus starts by itself, and `accessArguments`
/// for the server's access module.
void writeSessionFiles(const SessionFolders& folders, int quantum, const std::string& accessArguments);

/// What makes a null sink of this name, for PipeWire's "adapter" factory.
[[nodiscard]] std::map<std::string, std::string> sinkProperties(const std::string& name,
                                                                const std::string& description, int priority);

} // namespace sonvel::session
