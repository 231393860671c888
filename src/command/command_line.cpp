#include "command/command_line.h"

#include "command/listing.h"
#include "command/mixer_client.h"
#include "remote/mixer_interface.h"

#include <QCommandLineParser>
#include <algorithm>
#include <array>
#include <cstdio>

namespace sonvel::command {
namespace {

constexpr auto kSimulated = "simulated";
constexpr auto kJson = "json";

/// A command that was asked for.
struct Request {
  QStringList arguments;
  bool isJson = false;
};

struct Command {
  const char* name;
  const char* arguments; ///< as help names them
  const char* help;
  qsizetype fewest; ///< arguments
  qsizetype most;
  QStringList options; ///< that it takes
  int (*run)(const MixerClient& mixer, const Request& request);
};

void print(const QByteArray& text) {
  std::fwrite(text.constData(), 1, static_cast<std::size_t>(text.size()), stdout);
  std::fflush(stdout);
}

int list(const MixerClient& mixer, const Request& request) {
  mixer.call(QStringLiteral("Refresh"));
  print(request.isJson ? toJson(mixer.properties()) : toTable(mixer.properties()));
  return kDone;
}

const std::array kCommands{
    Command{"list", "", "the output's volume and the applications", 0, 0, {kJson}, list},
};

/// A number below zero is no option.
QStringList protectNumbers(QStringList words) {
  const auto isNumber = [](const QString& word) {
    return word.size() > 1 && word[0] == u'-' && word[1].isDigit();
  };
  if (const auto number = std::ranges::find_if(words, isNumber); number != words.end())
    words.insert(number, QStringLiteral("--"));
  return words;
}

[[noreturn]] void failUsage(const QString& text) {
  throw Failure(kWrongUsage, text + QStringLiteral("; see sonvel --help"));
}

int runChecked(const QStringList& words) {
  QCommandLineParser parser;
  parser.addOptions({{kSimulated, QString()}, {kJson, QString()}});
  if (!parser.parse(protectNumbers(words))) failUsage(parser.errorText());
  auto arguments = parser.positionalArguments();
  const auto name = arguments.takeFirst();
  const auto command = std::ranges::find_if(kCommands, [&](const Command& one) { return name == one.name; });
  if (command == kCommands.end()) failUsage(QStringLiteral("there is no command “%1”").arg(name));
  for (const auto& option : parser.optionNames())
    if (option != kSimulated && !command->options.contains(option))
      failUsage(QStringLiteral("%1 has no option --%2").arg(name, option));
  if (arguments.size() < command->fewest || arguments.size() > command->most)
    failUsage(QStringLiteral("usage: sonvel %1 %2").arg(name, QString::fromLatin1(command->arguments)));
  const MixerClient mixer(parser.isSet(kSimulated) ? remote::kSimulatedService : remote::kService);
  return command->run(mixer, {arguments, parser.isSet(kJson)});
}

} // namespace

bool isAsked(const QStringList& words) {
  const auto isOurs = [](const QString& word) {
    return word == QLatin1String("--simulated") || word == QLatin1String("--json");
  };
  const auto first = std::find_if_not(words.begin() + 1, words.end(), isOurs);
  return first != words.end() && !first->startsWith(u'-');
}

int run(const QStringList& words) {
  try {
    return runChecked(words);
  } catch (const Failure& failure) {
    std::fprintf(stderr, "sonvel: %s\n", failure.what());
    return failure.code();
  }
}

QString summary() {
  QString text;
  for (const auto& command : kCommands)
    text += QStringLiteral("  %1 %2\n")
                .arg(QString::fromLatin1(command.name), QString::fromLatin1(command.arguments));
  return text;
}

} // namespace sonvel::command
