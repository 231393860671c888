#include "session/player.h"

#include "session/tone_file.h"

#include <stdexcept>
#include <utility>

namespace sonvel::session {

namespace {

constexpr int kToneSeconds = 120;

// In the form of PULSE_PROP: name='value' name='value'
std::string propertyList(const std::map<std::string, std::string>& properties) {
  std::string list;
  for (const auto& [name, value] : properties)
    list += name + "='" + value + "' ";
  return list;
}

// In the form of pw-play: { "name": "value" "name": "value" }
std::string propertyObject(const std::map<std::string, std::string>& properties) {
  std::string object = "{ ";
  for (const auto& [name, value] : properties)
    object += "\"" + name + "\": \"" + value + "\" ";
  return object + "}";
}

// It sets role and target itself, over what the other properties say.
std::vector<std::string> pwPlayArguments(const std::string& file,
                                         std::map<std::string, std::string> properties) {
  std::vector<std::string> arguments;
  for (const auto& [name, option] :
       {std::pair{"media.role", "--media-role"}, {"target.object", "--target"}}) {
    const auto property = properties.extract(name);
    if (!property.empty()) arguments.insert(arguments.end(), {option, property.mapped()});
  }
  if (!properties.empty()) arguments.insert(arguments.end(), {"--properties", propertyObject(properties)});
  arguments.push_back(file);
  return arguments;
}

std::string programName(PlayerKind kind) {
  switch (kind) {
  case PlayerKind::pwPlay:
    return "pw-play";
  case PlayerKind::paplay:
    return "paplay";
  case PlayerKind::ffplay:
    return "ffplay";
  }
  throw std::invalid_argument("no such player");
}

std::vector<std::string> argumentsFor(PlayerKind kind, const std::string& file,
                                      const PlayerOptions& options) {
  switch (kind) {
  case PlayerKind::pwPlay:
    return pwPlayArguments(file, options.properties);
  case PlayerKind::paplay:
    return {file};
  case PlayerKind::ffplay:
    return {"-nodisp", "-autoexit", "-loglevel", "error", file};
  }
  throw std::invalid_argument("no such player");
}

Command commandFor(const PrivateSession& session, PlayerKind kind, Tone tone, const PlayerOptions& options) {
  const std::string file = toneFile(session.toneFolder(), tone, kToneSeconds);
  const std::string program = programName(kind);
  Command command = session.command(program, argumentsFor(kind, file, options));
  if (!options.binaryName.empty())
    command.program = session.copyProgram("/usr/bin/" + program, options.binaryName);
  if (!options.properties.empty() && kind != PlayerKind::pwPlay)
    command.environment["PULSE_PROP"] = propertyList(options.properties);
  command.environment["SDL_AUDIODRIVER"] = "pulseaudio";
  command.environment["SDL_VIDEODRIVER"] = "dummy";
  for (const auto& [name, value] : options.environment)
    command.environment[name] = value;
  return command;
}

} // namespace

Player::Player(const PrivateSession& session, PlayerKind kind, Tone tone, const PlayerOptions& options)
    : process_(commandFor(session, kind, tone, options)) {}

} // namespace sonvel::session
