#include "ui/presentation/panel_text.h"

#include "audio/mixer_math.h"

#include <algorithm>
#include <cmath>

namespace sonvel {
namespace {

/// What the model says of an empty list, which the list says itself.
constexpr QLatin1String kNoAppsStatus("No apps have played audio yet.");

int roundToInt(double value) {
  constexpr double kLimit = 1e6; // far beyond any percentage, and safe to convert
  return std::isnan(value) ? 0 : static_cast<int>(std::lround(std::clamp(value, -kLimit, kLimit)));
}

QString encoded(const std::string& text) {
  return QString::fromLatin1(QUrl::toPercentEncoding(QString::fromStdString(text)));
}

} // namespace

QUrl PanelText::settingsURL() {
  return QUrl(QLatin1String(AudioPermission::settingsURLString));
}

int PanelText::masterPercent(double volume) {
  return roundToInt(volume * 100.0);
}

int PanelText::wholePercent(double value) {
  return roundToInt(value);
}

double PanelText::meterFraction(double level) {
  return MixerMath::clampUnity(static_cast<float>(level));
}

bool PanelText::isBoost(int gainPercent) {
  return MixerMath::isBoost(gainPercent);
}

QString PanelText::number(int value) {
  return QString::number(value);
}

QString PanelText::spokenPercent(int percent) {
  return QString::number(percent) + QLatin1String(" percent");
}

QString PanelText::volumeLabel(const QString& appName) {
  return appName + QLatin1String(" volume");
}

QString PanelText::removeLabel(const QString& appName) {
  return QLatin1String("Remove ") + appName + QLatin1String(" from the mixer");
}

QString PanelText::muteLabel(bool isMuted, const QString& appName) {
  return muteHelp(isMuted) + QLatin1Char(' ') + appName;
}

QString PanelText::muteHelp(bool isMuted) {
  return isMuted ? QStringLiteral("Unmute") : QStringLiteral("Mute");
}

QString PanelText::outputLabel(const QString& appName) {
  return QLatin1String("Output for ") + appName;
}

QString PanelText::spokenError(const QString& title, const QString& error) {
  return title + QLatin1String(", ") + error;
}

QString PanelText::cardTitle(bool isFirstRun) {
  return isFirstRun ? QStringLiteral("Welcome to Sonvel")
                    : QStringLiteral("One permission to control app audio");
}

QString PanelText::statusLine(const QString& serverNotice, const QString& status, int rowCount) {
  if (!serverNotice.isEmpty()) return serverNotice;
  return rowCount == 0 && status == kNoAppsStatus ? QString() : status;
}

bool PanelText::isDenied(AudioCaptureStatus permission) {
  return permission == AudioCaptureStatus::denied;
}

QUrl PanelText::symbol(const QString& name, const QColor& color) {
  return QUrl(QLatin1String("image://symbol/") + name + QLatin1Char('/') + color.name().mid(1));
}

QUrl PanelText::appIcon(const AudioApp& app, bool isPlaying) {
  const QStringList parts{QString::number(app.pid), encoded(app.bundleID),
                          encoded(app.parentBundleID.value_or("")), isPlaying ? "0" : "70"};
  return QUrl(QLatin1String("image://app-icon/") + parts.join(QLatin1Char('/')));
}

} // namespace sonvel
