#include "updater/relaunch.h"

#include "updater/installation.h"

#include <spawn.h>

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusReply>
#include <QDeadlineTimer>
#include <QEventLoop>
#include <QProcess>
#include <QTimer>
#include <array>
#include <csignal>
#include <string>
#include <sys/wait.h>
#include <vector>

namespace sonvel::updater {
namespace {

using std::chrono::milliseconds;

constexpr milliseconds kLookEvery{100};
const QString kBusName = QStringLiteral("com.quellmarsh.sonvel");

/// Environment variable of a restored program, with the reason.
constexpr const char* kReasonVariable = "SONVEL_UPDATE_UNDONE";
constexpr std::array kReasons{std::pair{"not-started", UpdateFailure::newVersionNotStarted},
                              std::pair{"not-ready", UpdateFailure::newVersionNotReady},
                              std::pair{"died", UpdateFailure::newVersionDied}};

/// Starts `program` as a child in a process session of its own, with no blocked signals. None if it can't be
/// started.
std::optional<pid_t> startChild(const std::filesystem::path& program,
                                const QProcessEnvironment& environment) {
  std::vector<std::string> texts;
  for (const QString& text : environment.toStringList())
    texts.push_back(text.toLocal8Bit().toStdString());
  std::vector<char*> variables;
  for (std::string& text : texts)
    variables.push_back(text.data());
  variables.push_back(nullptr);
  std::string name = program.string();
  std::array<char*, 2> arguments{name.data(), nullptr};

  posix_spawnattr_t attributes;
  posix_spawnattr_init(&attributes);
  sigset_t none;
  sigemptyset(&none);
  posix_spawnattr_setsigmask(&attributes, &none);
  posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSID | POSIX_SPAWN_SETSIGMASK);
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addchdir_np(&actions, "/"); // the current folder may be in the mount
  pid_t child = 0;
  const int failed =
      posix_spawn(&child, name.c_str(), &actions, &attributes, arguments.data(), variables.data());
  posix_spawn_file_actions_destroy(&actions);
  posix_spawnattr_destroy(&attributes);
  return failed == 0 ? std::optional(child) : std::nullopt;
}

/// A started new version, as seen from outside.
class NewVersion {
 public:
  explicit NewVersion(pid_t process)
      : process_(process) {}

  bool isRunning() {
    if (!status_) {
      int status = 0;
      if (::waitpid(process_, &status, WNOHANG) == process_) status_ = status;
    }
    return !status_;
  }

  /// After its end.
  bool hasFailed() const { return !WIFEXITED(*status_) || WEXITSTATUS(*status_) != 0; }

  static bool hasBus() { return QDBusConnection::sessionBus().isConnected(); }

  /// Whether a copy of the program owns the bus name.
  static bool ownsName() {
    return hasBus() && QDBusConnection::sessionBus().interface()->isServiceRegistered(kBusName).value();
  }

  void end(milliseconds within) {
    ::kill(process_, SIGTERM);
    const QDeadlineTimer deadline(within);
    while (isRunning() && !deadline.hasExpired())
      waitALittle();
    if (isRunning()) ::kill(-process_, SIGKILL); // with its children
  }

  static void waitALittle() {
    QEventLoop loop;
    QTimer::singleShot(kLookEvery, &loop, &QEventLoop::quit);
    loop.exec();
  }

 private:
  pid_t process_;
  std::optional<int> status_;
};

/// Watches a new version. None if it has proved to work, or its user ended it normally.
std::optional<UpdateFailure> failureOf(NewVersion& version, const Relaunch::Trial& trial, bool& isProved) {
  const bool hadBus = NewVersion::hasBus();
  const QDeadlineTimer comesUp(trial.comesUpWithin);
  bool isUp = !hadBus; // without a bus only the process can be watched
  while (!isUp) {
    isUp = NewVersion::ownsName();
    if (isUp) break;
    if (!NewVersion::hasBus()) return std::nullopt;
    if (!version.isRunning()) return UpdateFailure::newVersionDied;
    if (comesUp.hasExpired()) return UpdateFailure::newVersionNotReady;
    NewVersion::waitALittle();
  }
  const QDeadlineTimer stays(trial.staysFor);
  while (!stays.hasExpired()) {
    if (hadBus && !NewVersion::hasBus()) return std::nullopt;
    if (!version.isRunning())
      return version.hasFailed() ? std::optional(UpdateFailure::newVersionDied) : std::nullopt;
    NewVersion::waitALittle();
  }
  isProved = true;
  return std::nullopt;
}

bool startPrevious(const std::filesystem::path& program, UpdateFailure reason) {
  QProcessEnvironment environment = environmentOutsideImage(QProcessEnvironment::systemEnvironment());
  for (const auto& [name, failure] : kReasons)
    if (failure == reason) environment.insert(QLatin1String(kReasonVariable), QLatin1String(name));
  return startChild(program, environment).has_value();
}

} // namespace

QProcessEnvironment environmentOutsideImage(const QProcessEnvironment& environment) {
  QProcessEnvironment kept = environment;
  const QString mount = environment.value(QStringLiteral("APPDIR"));
  for (const char* name : {"APPIMAGE", "APPDIR", "ARGV0", "OWD"})
    kept.remove(QLatin1String(name));
  if (mount.isEmpty()) return kept;
  for (const QString& name : kept.keys()) {
    const QString value = kept.value(name);
    if (!value.contains(mount)) continue;
    QStringList parts = value.split(QLatin1Char(':'));
    parts.removeIf([&](const QString& part) { return part.contains(mount); });
    parts.removeAll(QString()); // an empty part means the current folder
    parts.isEmpty() ? kept.remove(name) : kept.insert(name, parts.join(QLatin1Char(':')));
  }
  return kept;
}

bool Relaunch::perform() const {
  if (!program_) return false;
  std::optional<UpdateFailure> failure = UpdateFailure::newVersionNotStarted;
  const auto process =
      startChild(*program_, environmentOutsideImage(QProcessEnvironment::systemEnvironment()));
  if (process) {
    NewVersion version(*process);
    bool isProved = false;
    failure = failureOf(version, trial_, isProved);
    if (isProved) forgetPreviousProgram(*program_);
    if (failure && version.isRunning()) version.end(trial_.endsWithin);
  }
  if (!failure) return true;
  return restorePreviousProgram(*program_) && startPrevious(*program_, *failure);
}

std::optional<UpdateFailure> takeReasonOfReturn() {
  const QByteArray reason = qgetenv(kReasonVariable);
  qunsetenv(kReasonVariable);
  for (const auto& [name, failure] : kReasons)
    if (reason == name) return failure;
  return std::nullopt;
}

} // namespace sonvel::updater
