#include "remote/caller_gate.h"

#include <QDBusArgument>
#include <QDBusMessage>
#include <QVariantMap>
#include <cerrno>
#include <fcntl.h>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

namespace sonvel::remote {
namespace {

constexpr qsizetype kMostKnown = 256; // beyond that the cache is cleared and callers are checked again

/// Time limit for the bus's own answer.
constexpr int kBusPatienceMs = 2000;

QVariantMap credentials(const QString& caller, const QDBusConnection& bus) {
  auto question = QDBusMessage::createMethodCall(
      QStringLiteral("org.freedesktop.DBus"), QStringLiteral("/org/freedesktop/DBus"),
      QStringLiteral("org.freedesktop.DBus"), QStringLiteral("GetConnectionCredentials"));
  question << caller;
  const auto answer = bus.call(question, QDBus::Block, kBusPatienceMs);
  if (answer.type() != QDBusMessage::ReplyMessage || answer.arguments().isEmpty()) return {};
  return qdbus_cast<QVariantMap>(answer.arguments().constFirst());
}

/// Whether the process's root folder could be read and has no Flatpak mark. Flatpak's D-Bus proxy, through
/// which most sandboxed programs reach the bus, has the mark too.
bool isOutsideFlatpak(uint pid) {
  const std::string root = "/proc/" + std::to_string(pid) + "/root";
  const int folder = open(root.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC);
  if (folder < 0) return false;

  struct stat mark {};

  const bool isMissing = fstatat(folder, ".flatpak-info", &mark, AT_SYMLINK_NOFOLLOW) != 0 && errno == ENOENT;
  close(folder);
  return isMissing;
}

bool isOutsideSandboxes(const QVariantMap& credentials) {
  const uint pid = credentials.value(QStringLiteral("ProcessID")).toUInt();
  const bool isSnap =
      credentials.value(QStringLiteral("LinuxSecurityLabel")).toByteArray().startsWith("snap.");
  return pid != 0 && !isSnap && isOutsideFlatpak(pid);
}

} // namespace

bool CallerGate::admits(const QString& caller, const QDBusConnection& bus) {
  if (const auto found = known_.constFind(caller); found != known_.constEnd()) return *found;
  if (known_.size() >= kMostKnown) known_.clear();
  return *known_.insert(caller, isOutsideSandboxes(credentials(caller, bus)));
}

} // namespace sonvel::remote
