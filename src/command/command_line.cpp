#include "command/command_line.h"

#include "command/listing.h"
#include "command/mixer_client.h"
#include "command/watch.h"
#include "remote/mixer_interface.h"

#include <QCommandLineParser>
#include <algorithm>
#include <array>
#include <cstdio>
#include <vector>

namespace sonvel::command {
namespace {

constexpr auto kSimulated = "simulated";
constexpr auto kJson = "json";
constexpr auto kLevels = "levels";

/// A command as entered.
struct Request {
  QStringList arguments;
  bool isJson = false;
  bool hasLevels = false;
};

struct Command {
  const char* name;
  const char* arguments; ///< as help prints them
  const char* help;
  qsizetype fewest; ///< fewest and most arguments
  qsizetype most;
  std::vector<const char*> options;
  void (*run)(const MixerClient& mixer, const Request& request);
};

[[noreturn]] void failUsage(const QString& text) {
  throw Failure(kWrongUsage, text + QStringLiteral("; see sonvel --help"));
}

void list(const MixerClient& mixer, const Request& request) {
  mixer.call(QStringLiteral("Refresh"));
  print(request.isJson ? toJson(mixer.properties()) : toTable(mixer.properties()));
}

/// Sets the volume, or changes it if the number has a sign.
void adjust(const MixerClient& mixer, const QString& what, QVariantList arguments, QString number) {
  if (number.endsWith(u'%')) number.chop(1);
  bool isNumber = false;
  arguments += number.toInt(&isNumber);
  if (!isNumber) failUsage(QStringLiteral("“%1” is not a volume").arg(number));
  const bool isDifference = number.startsWith(u'+') || number.startsWith(u'-');
  mixer.call((isDifference ? QStringLiteral("Change") : QStringLiteral("Set")) + what, arguments);
}

void volume(const MixerClient& mixer, const Request& request) {
  adjust(mixer, QStringLiteral("Volume"), {request.arguments[0]}, request.arguments[1]);
}

void master(const MixerClient& mixer, const Request& request) {
  adjust(mixer, QStringLiteral("MasterVolume"), {}, request.arguments[0]);
}

void mute(const MixerClient& mixer, const Request& request) {
  const auto& application = request.arguments[0];
  const auto how = request.arguments.value(1, QStringLiteral("on"));
  if (how == QLatin1String("toggle"))
    mixer.call(QStringLiteral("ToggleMute"), {application});
  else if (how == QLatin1String("on") || how == QLatin1String("off"))
    mixer.call(QStringLiteral("SetMuted"), {application, how == QLatin1String("on")});
  else
    failUsage(QStringLiteral("“%1” is not on, off or toggle").arg(how));
}

void route(const MixerClient& mixer, const Request& request) {
  const auto& device = request.arguments[1];
  const bool isFollowing = device == QLatin1String("follow");
  mixer.call(QStringLiteral("SetRoute"), {request.arguments[0], isFollowing ? QString() : device});
}

void reset(const MixerClient& mixer, const Request& /*request*/) {
  mixer.call(QStringLiteral("ResetVolumes"));
}

void everything(const MixerClient& mixer, const Request& /*request*/) {
  mixer.call(QStringLiteral("ResetRoutes"));
}

void watch(const MixerClient& mixer, const Request& request) {
  if (request.hasLevels && !request.isJson) failUsage(QStringLiteral("--levels needs --json"));
  Watch(mixer, request.isJson ? toJson : toTable, request.hasLevels).run();
}

const std::array kCommands{
    Command{"list", "[--json]", "prints the output's volume and the applications", 0, 0, {kJson}, list},
    Command{"volume",
            "APPLICATION PERCENT",
            "sets its volume; with a sign (+5, -5) changes it",
            2,
            2,
            {},
            volume},
    Command{"mute", "APPLICATION [on|off|toggle]", "mutes it, or not", 1, 2, {}, mute},
    Command{
        "route", "APPLICATION DEVICE", "sends it to a device; follow: to the system output", 2, 2, {}, route},
    Command{"master", "PERCENT", "sets or changes the volume of the output", 1, 1, {}, master},
    Command{"reset", "", "sets every application to 100 percent, unmuted", 0, 0, {}, reset},
    Command{"everything", "", "sends every application to the system output", 0, 0, {}, everything},
    Command{"watch",
            "[--json] [--levels]",
            "prints the same as list after each change",
            0,
            0,
            {kJson, kLevels},
            watch},
};

/// Negative numbers must not be parsed as options.
QStringList protectNumbers(QStringList words) {
  const auto isNumber = [](const QString& word) {
    return word.size() > 1 && word[0] == u'-' && word[1].isDigit();
  };
  if (const auto number = std::ranges::find_if(words, isNumber); number != words.end())
    words.insert(number, QStringLiteral("--"));
  return words;
}

void runChecked(const QStringList& words) {
  QCommandLineParser parser;
  parser.addOptions({{kSimulated, QString()}, {kJson, QString()}, {kLevels, QString()}});
  if (!parser.parse(protectNumbers(words))) failUsage(parser.errorText());
  auto arguments = parser.positionalArguments();
  const auto name = arguments.takeFirst();
  const auto command = std::ranges::find_if(kCommands, [&](const Command& one) { return name == one.name; });
  if (command == kCommands.end()) failUsage(QStringLiteral("there is no command “%1”").arg(name));
  for (const auto& option : parser.optionNames())
    if (option != kSimulated && std::ranges::find(command->options, option) == command->options.end())
      failUsage(QStringLiteral("%1 has no option --%2").arg(name, option));
  if (arguments.size() < command->fewest || arguments.size() > command->most)
    failUsage(QStringLiteral("usage: sonvel %1 %2").arg(name, QString::fromLatin1(command->arguments)));
  const MixerClient mixer(parser.isSet(kSimulated) ? remote::kSimulatedService : remote::kService);
  command->run(mixer, {arguments, parser.isSet(kJson), parser.isSet(kLevels)});
}

} // namespace

bool isAsked(const QStringList& words) {
  static const QStringList options{"--simulated", "--json", "--levels", "--verbose"};
  const auto isOption = [](const QString& word) { return options.contains(word); };
  const auto first = std::find_if_not(words.begin() + 1, words.end(), isOption);
  return first != words.end() && !first->startsWith(u'-');
}

int run(const QStringList& words) {
  try {
    runChecked(words);
    return kDone;
  } catch (const Failure& failure) {
    std::fprintf(stderr, "sonvel: %s\n", failure.what());
    return failure.code();
  }
}

QString summary() {
  QString text = QStringLiteral("Commands for the running Sonvel:");
  for (const auto& command : kCommands)
    text += QStringLiteral("\n%1 %2: %3")
                .arg(QString::fromLatin1(command.name), QString::fromLatin1(command.arguments),
                     QString::fromLatin1(command.help));
  return text;
}

} // namespace sonvel::command
