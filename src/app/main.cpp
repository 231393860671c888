
#include "app/diagnosis.h"
#include "app/quit_deadline.h"
#include "app/single_instance.h"
#include "app/sonvel_app.h"
#include "command/command_line.h"
#include "pipewire/graph_log.h"
#include "remote/mixer_interface.h"
#include "remote/mixer_service.h"
#include "ui/shell/frame_pace.h"
#include "ui/translations/translations.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QDBusConnection>
#include <QQuickWindow>
#include <cstdio>
#include <exception>
#include <optional>

namespace {

enum ExitCode { kFailed = 1, kNoAnswer = 2 }; // see also QuitDeadline::kExitCode

constexpr const char* kWaylandToken = "XDG_ACTIVATION_TOKEN";
constexpr const char* kX11Token = "DESKTOP_STARTUP_ID";

struct Options {
  sonvel::Machine machine = sonvel::Machine::real;
  bool isInBackground = false; ///< do not open the panel at the start
};

/// What the program and the code around it share.
struct Process {
  Options options;
  sonvel::LaunchToken token; ///< from the launcher
  sonvel::updater::Relaunch relaunch;
  std::optional<sonvel::QuitDeadline> deadline{std::in_place};
};

int run(std::optional<sonvel::SonvelApp>& app, sonvel::remote::MixerService& remote, Process& process) {
  try {
    app.emplace(process.relaunch, *process.deadline, process.options.machine);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "sonvel: %s\n", error.what());
    return kFailed;
  }
  remote.serve(app->model());
  if (!process.options.isInBackground) app->showPanel();
  const int exitCode = app->run();
  remote.serve(nullptr);
  app.reset();
  return exitCode;
}

void setUnlessEmpty(const char* variable, const QString& value) {
  if (!value.isEmpty()) qputenv(variable, value.toUtf8());
}

int runAsOnlyOne(Process& process) {
  std::optional<sonvel::SonvelApp> app;
  const auto bus = QDBusConnection::sessionBus();
  sonvel::remote::CallerGate gate;
  // before the bus name exists, so that early calls are served
  sonvel::remote::MixerService remote(bus, gate);
  sonvel::SingleInstance instance({.showPanel =
                                       [&](const sonvel::LaunchToken& token) {
                                         // Qt and the panel's window read them from here.
                                         setUnlessEmpty(kWaylandToken, token.wayland);
                                         setUnlessEmpty(kX11Token, token.x11);
                                         return app && app->showPanel();
                                       },
                                   .quit =
                                       [&] {
                                         if (app) app->terminate();
                                       },
                                   .admits = [&](const QString& caller) { return gate.admits(caller, bus); }},
                                  process.token);
  switch (instance.acquire()) {
    using enum sonvel::SingleInstance::Outcome;
  case toldTheFirst:
    return EXIT_SUCCESS;
  case firstDoesNotAnswer:
    std::fputs("sonvel: another Sonvel runs in this session and does not answer\n", stderr);
    return kNoAnswer;
  case first:
  case noBus:
    return run(app, remote, process);
  }
  return kFailed;
}

/// May run beside a Sonvel on the real sound server.
int runSimulated(Process& process) {
  std::optional<sonvel::SonvelApp> app;
  auto bus = QDBusConnection::sessionBus();
  sonvel::remote::CallerGate gate;
  sonvel::remote::MixerService remote(bus, gate);
  // with several simulated ones, commands reach the first
  bus.registerService(sonvel::remote::kSimulatedService);
  return run(app, remote, process);
}

QStringList toWords(int argumentCount, char** arguments) {
  QStringList words;
  for (int i = 0; i < argumentCount; ++i)
    words += QString::fromLocal8Bit(arguments[i]);
  return words;
}

/// Handles the options. Ends the process after --help and --version, which need no display.
Options obeyOptions(int& argumentCount, char** arguments) {
  QCommandLineParser parser;
  parser.setApplicationDescription(QStringLiteral("A volume for every application that plays sound."));
  const auto help = parser.addHelpOption();
  const auto version = parser.addVersionOption();
  const QCommandLineOption verbose(QStringLiteral("verbose"),
                                   QStringLiteral("Logs every change of the sound server's graph."));
  const QCommandLineOption simulated(
      QStringLiteral("simulated"),
      QStringLiteral("Opens the panel on a simulated machine; nothing is heard."));
  const QCommandLineOption background(QStringLiteral("background"),
                                      QStringLiteral("Starts without opening the panel, as at login."));
  const QCommandLineOption diagnose(
      QStringLiteral("diagnose"),
      QStringLiteral("Prints versions, the state of the sound server, rows and last errors, for a report."));
  parser.addOptions({verbose, simulated, background, diagnose});
  parser.addPositionalArgument(QStringLiteral("command"), sonvel::command::summary(),
                               QStringLiteral("[command]"));
  parser.parse(toWords(argumentCount, arguments));
  if (parser.isSet(verbose)) sonvel::pipewire::setVerbose();
  if (!parser.isSet(help) && !parser.isSet(version) && !parser.isSet(diagnose))
    return {parser.isSet(simulated) ? sonvel::Machine::simulated : sonvel::Machine::real,
            parser.isSet(background)};

  // Destroyed before the real application object is created: a second application object in one process has
  // no accessibility.
  const QCoreApplication application(argumentCount, arguments);
  if (parser.isSet(version)) parser.showVersion();
  if (parser.isSet(diagnose)) {
    std::fputs(qPrintable(sonvel::diagnosis()), stdout);
    std::exit(EXIT_SUCCESS); // as showVersion and showHelp do
  }
  parser.showHelp(); // ends the process
}

} // namespace

int main(int argumentCount, char** arguments) {
  QApplication::setApplicationName(QStringLiteral("Sonvel"));
  QApplication::setApplicationVersion(QStringLiteral(SONVEL_VERSION));
  if (const auto words = toWords(argumentCount, arguments); sonvel::command::isAsked(words)) {
    const QCoreApplication application(argumentCount, arguments);
    return sonvel::command::run(words);
  }
  const auto options = obeyOptions(argumentCount, arguments);

  // The panel is small and mostly static: software rendering needs a third of the memory of a GPU driver.
  QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);
  Process process{.options = options,
                  // Qt removes them later
                  .token = {qEnvironmentVariable(kWaylandToken), qEnvironmentVariable(kX11Token)}};
  // The process outlives the application object, whose destruction may hang too.
  const QApplication application(argumentCount, arguments);
  QApplication::setDesktopFileName(QStringLiteral("com.quellmarsh.sonvel"));
  QApplication::setQuitOnLastWindowClosed(false);
  const sonvel::Translations translations;
  const sonvel::ui::FramePace framePace;

  const int exitCode =
      options.machine == sonvel::Machine::simulated ? runSimulated(process) : runAsOnlyOne(process);
  // a new version may take longer to report success
  if (process.relaunch.isRequested()) process.deadline.reset();
  process.relaunch.perform();
  return exitCode;
}
