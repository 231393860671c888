#include "ui/presentation/panel_text.h"

#include "audio/mixer_math.h"
#include "platform/audio_types.h"

#include <algorithm>
#include <cmath>

namespace sonvel {
namespace {

int roundToInt(double value) {
  constexpr double kLimit = 1e6; // far above any percentage, and safe to convert
  return std::isnan(value) ? 0 : static_cast<int>(std::lround(std::clamp(value, -kLimit, kLimit)));
}

/// An audio status in words; empty if it says nothing to the user.
QString statusWords(OSStatus status) {
  switch (status) {
  case status::kNotRunning:
    return PanelText::tr("The sound server is not running.");
  case status::kUnspecified:
    return PanelText::tr("The sound server did not answer in time.");
  case status::kBadDevice:
    return PanelText::tr("The device is not there.");
  case status::kBadObject:
    return PanelText::tr("The app is not there any more.");
  case status::kIllegalOperation:
    return PanelText::tr("The sound server does not allow it.");
  default:
    return {};
  }
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
  return tr("%1 percent").arg(number(percent));
}

QString PanelText::volumeLabel(const QString& appName) {
  return tr("%1 volume").arg(appName);
}

QString PanelText::removeLabel(const QString& appName) {
  return tr("Remove %1 from the mixer").arg(appName);
}

QString PanelText::muteLabel(bool isMuted, const QString& appName) {
  return isMuted ? tr("Unmute %1").arg(appName) : tr("Mute %1").arg(appName);
}

QString PanelText::muteHelp(bool isMuted) {
  return isMuted ? tr("Unmute") : tr("Mute");
}

QString PanelText::outputLabel(const QString& appName) {
  return tr("Output for %1").arg(appName);
}

QString PanelText::spokenPair(const QString& first, const QString& second) {
  return tr("%1, %2", "two texts that are read aloud as one").arg(first, second);
}

QString PanelText::cardTitle(bool isFirstRun) {
  return isFirstRun ? tr("Welcome to Sonvel") : tr("One permission to control app audio");
}

QString PanelText::statusText(const MixerStatus& status) {
  using enum MixerStatus::Event;
  switch (status.event) {
  case noAppsYet:
    return tr("No apps have played audio yet.");
  case appsListed: {
    auto playing = tr("%n playing", "applications", status.playing);
    if (status.idle == 0) return playing;
    return playing + QStringLiteral(" \u00B7 ") + tr("%n idle", "applications", status.idle);
  }
  case permissionRevoked:
    return tr("Audio access was revoked. Audio was restored to its normal output.");
  case restorationFails:
    return tr("Audio access was revoked. Audio restoration is retrying: %1")
        .arg(QString::fromStdString(status.failures));
  case nothing:
    break;
  }
  return {};
}

QString PanelText::statusLine(const QString& serverNotice, const MixerStatus& status,
                              const QString& restorationFailure, int rowCount) {
  if (!serverNotice.isEmpty()) return serverNotice;
  if (!restorationFailure.isEmpty() && status.event != MixerStatus::Event::restorationFails)
    return restorationFailure;
  const bool isSaidByTheList = rowCount == 0 && status.event == MixerStatus::Event::noAppsYet;
  return isSaidByTheList ? QString() : statusText(status);
}

QString PanelText::errorText(const QString& text, int status) {
  const auto words = statusWords(status);
  return words.isEmpty() ? text : words + QLatin1Char(' ') + text;
}

QString PanelText::sessionNote(bool isPartial, bool isOutputConnected, const QString& chosenName,
                               const QString& playingName) {
  QStringList sentences;
  if (!isOutputConnected) {
    sentences += tr("%1 is not connected.").arg(chosenName);
    if (!playingName.isEmpty()) sentences += tr("Until it is, you hear this app on %1.").arg(playingName);
  }
  if (isPartial) sentences += tr("Only part of this app’s sound can be controlled.");
  return sentences.join(QLatin1Char(' '));
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
