#include "app/diagnosis.h"

#include "command/mixer_client.h"
#include "desktop/pulse_audio.h"
#include "pipewire/graph_summary.h"
#include "remote/mixer_interface.h"

#include <QCoreApplication>
#include <QDBusConnectionInterface>
#include <QDir>
#include <QProcess>
#include <QSysInfo>

namespace sonvel {

namespace {

constexpr std::chrono::milliseconds kServerPatience{3000};
constexpr int kProgramPatienceMs = 3000;

QString line(const QString& what, const QString& is) {
  return what.leftJustified(17) + (is.isEmpty() ? QStringLiteral("unknown") : is) + QLatin1Char('\n');
}

QString yesOrNo(bool is) {
  return is ? QStringLiteral("yes") : QStringLiteral("no");
}

/// The last word of `program --version`; empty if the program does not exist.
QString versionOf(const QString& program) {
  QProcess process;
  process.start(program, {QStringLiteral("--version")});
  if (!process.waitForFinished(kProgramPatienceMs)) return {};
  return QString::fromLocal8Bit(process.readAllStandardOutput()).simplified().section(u' ', -1);
}

QString versionFacts() {
  return line(QStringLiteral("Sonvel"), QCoreApplication::applicationVersion()) +
         line(QStringLiteral("Qt"), QString::fromLatin1(qVersion())) +
         line(QStringLiteral("system"), QSysInfo::prettyProductName()) +
         line(QStringLiteral("kernel"), QSysInfo::kernelVersion()) +
         line(QStringLiteral("PipeWire library"), QString::fromStdString(pipewire::soundLibraryVersion())) +
         line(QStringLiteral("WirePlumber"), versionOf(QStringLiteral("wireplumber")));
}

QString desktopFacts() {
  const auto bus = QDBusConnection::sessionBus();
  const bool hasTray = bus.isConnected() &&
                       bus.interface()->isServiceRegistered(QStringLiteral("org.kde.StatusNotifierWatcher"));
  return line(QStringLiteral("desktop"), qEnvironmentVariable("XDG_CURRENT_DESKTOP")) +
         line(QStringLiteral("session"), qEnvironmentVariable("XDG_SESSION_TYPE")) +
         line(QStringLiteral("displays"), QStringLiteral("Wayland %1, X11 %2")
                                              .arg(yesOrNo(qEnvironmentVariableIsSet("WAYLAND_DISPLAY")),
                                                   yesOrNo(qEnvironmentVariableIsSet("DISPLAY")))) +
         line(QStringLiteral("session bus"), yesOrNo(bus.isConnected())) +
         line(QStringLiteral("tray"), yesOrNo(hasTray));
}

QString serverFacts() {
  QString text = line(QStringLiteral("PulseAudio"), yesOrNo(desktop::isPulseAudioServing()));
  const auto graph = pipewire::readGraphSummary(kServerPatience);
  if (!graph) return text + line(QStringLiteral("PipeWire"), QStringLiteral("does not answer"));
  text += line(QStringLiteral("PipeWire"), QString::fromStdString(graph->serverVersion));
  for (const auto& [kind, count] : graph->counts)
    text += QStringLiteral("  %1 %2\n").arg(count, 3).arg(QString::fromStdString(kind));
  return text + QStringLiteral("  %1 nodes of Sonvel\n").arg(graph->ownNodes, 3);
}

/// "output 2": its place in the list of devices, because names and UIDs tell about the user's devices.
QString outputNumber(const QVariant& uid, const QStringList& devices) {
  const auto index = devices.indexOf(uid.toString());
  return index < 0 ? QStringLiteral("an absent output") : QStringLiteral("output %1").arg(index + 1);
}

QString describe(const QVariantMap& row, const QStringList& devices) {
  QStringList words{QStringLiteral("%1 %").arg(row["volume"].toInt())};
  for (const auto& name : {QStringLiteral("muted"), QStringLiteral("playing"), QStringLiteral("controlled"),
                           QStringLiteral("partial")})
    if (row[name].toBool()) words += name;
  if (row.contains("route")) words += QStringLiteral("sent to ") + outputNumber(row["route"], devices);
  if (row.contains("output")) words += QStringLiteral("heard at ") + outputNumber(row["output"], devices);
  if (row.contains("error")) words += QStringLiteral("error: ") + row["error"].toString();
  return QStringLiteral("  %1 (%2): %3\n")
      .arg(row["name"].toString(), row["key"].toString(), words.join(QStringLiteral(", ")));
}

QString list(const QString& heading, const QStringList& lines) {
  return heading + QLatin1Char('\n') + (lines.isEmpty() ? QStringLiteral("  none\n") : lines.join(QString()));
}

QString programFacts() {
  try {
    const command::MixerClient mixer(remote::kService);
    const auto properties = mixer.properties();
    QStringList devices;
    for (const auto& device : properties["Devices"].toList())
      devices += device.toMap()["uid"].toString();
    QStringList rows;
    for (const auto& row : properties["Applications"].toList())
      rows += describe(row.toMap(), devices);
    QStringList errors;
    for (const auto& error : properties["LastErrors"].toStringList())
      errors += QStringLiteral("  ") + error + QLatin1Char('\n');
    return line(QStringLiteral("Sonvel runs"), QStringLiteral("yes")) +
           line(QStringLiteral("permission"), properties["Permission"].toString()) +
           line(QStringLiteral("outputs"), QString::number(devices.size())) +
           list(QStringLiteral("rows"), rows) + list(QStringLiteral("last errors"), errors);
  } catch (const command::Failure& failure) {
    return line(QStringLiteral("Sonvel runs"), QString::fromUtf8(failure.what()));
  }
}

} // namespace

QString diagnosis() {
  QString text = versionFacts() + desktopFacts() + serverFacts() + programFacts();
  if (const auto home = QDir::homePath(); home != QDir::rootPath()) text.replace(home, QStringLiteral("~"));
  return text;
}

} // namespace sonvel
