#pragma once

#include "audio/audio_app.h"
#include "audio/audio_permission.h"
#include "model/mixer_status.h"

#include <QColor>
#include <QObject>
#include <QUrl>
#include <QtQml/qqmlregistration.h>

namespace sonvel {

/// What the views say, and the numbers behind it. Pure.
class PanelText final : public QObject {
  Q_OBJECT
  QML_ELEMENT
  QML_SINGLETON
  Q_PROPERTY(QUrl settingsURL READ settingsURL CONSTANT)

 public:
  /// Opens the settings at the permission to capture.
  static QUrl settingsURL();

  // Numbers. NaN counts as 0.

  /// Whole percent of a master volume of 0.0 to 1.0.
  Q_INVOKABLE static int masterPercent(double volume);

  /// The percentage that a slider at `value` asks for.
  Q_INVOKABLE static int wholePercent(double value);

  /// How much of a meter is filled, 0.0 to 1.0, for any level.
  Q_INVOKABLE static double meterFraction(double level);

  Q_INVOKABLE static bool isBoost(int gainPercent);

  // Words.

  /// Digits alone, in every language.
  Q_INVOKABLE static QString number(int value);

  Q_INVOKABLE static QString spokenPercent(int percent);
  Q_INVOKABLE static QString volumeLabel(const QString& appName);
  Q_INVOKABLE static QString removeLabel(const QString& appName);
  Q_INVOKABLE static QString muteLabel(bool isMuted, const QString& appName);
  Q_INVOKABLE static QString muteHelp(bool isMuted);
  Q_INVOKABLE static QString outputLabel(const QString& appName);
  Q_INVOKABLE static QString spokenError(const QString& title, const QString& error);
  Q_INVOKABLE static QString cardTitle(bool isFirstRun);

  /// The status of the model in words; empty if nothing has happened.
  static QString statusText(const MixerStatus& status);

  /// The status line; empty if there is none. A notice about sound as a whole takes the place of the model's
  /// status, and what could not be given back that of its counts. An empty list says by itself that no
  /// application has played.
  Q_INVOKABLE static QString statusLine(const QString& serverNotice, const sonvel::MixerStatus& status,
                                        const QString& restorationFailure, int rowCount);

  /// A failure in words, followed by its text with the number. `status` is what the audio system returned.
  Q_INVOKABLE static QString errorText(const QString& text, int status);

  /// What the user should know of a session that plays; empty if all is as they chose. The names are those of
  /// the device that they chose, and of the one where the app is heard now, if any.
  Q_INVOKABLE static QString sessionNote(bool isPartial, bool isOutputConnected, const QString& chosenName,
                                         const QString& playingName);

  Q_INVOKABLE static bool isDenied(sonvel::AudioCaptureStatus permission);

  // Pictures, as their providers name them.

  Q_INVOKABLE static QUrl symbol(const QString& name, const QColor& color);

  /// The icon of an application, grey while it does not play.
  Q_INVOKABLE static QUrl appIcon(const sonvel::AudioApp& app, bool isPlaying);
};

} // namespace sonvel
