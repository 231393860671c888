#pragma once

#include "audio/audio_app.h"
#include "audio/audio_permission.h"
#include "model/mixer_status.h"

#include <QColor>
#include <QObject>
#include <QUrl>
#include <QtQml/qqmlregistration.h>

namespace sonvel {

/// The texts of the views and the numbers behind them. Pure.
class PanelText final : public QObject {
  Q_OBJECT
  QML_ELEMENT
  QML_SINGLETON
  Q_PROPERTY(QUrl settingsURL READ settingsURL CONSTANT)

 public:
  /// The address of the settings for the capture permission.
  static QUrl settingsURL();

  // Numbers. NaN gives 0.

  /// A master volume of 0.0 to 1.0 as whole percent.
  Q_INVOKABLE static int masterPercent(double volume);

  /// The percentage for a slider at `value`.
  Q_INVOKABLE static int wholePercent(double value);

  /// The filled fraction of a meter, 0.0 to 1.0, for any level.
  Q_INVOKABLE static double meterFraction(double level);

  Q_INVOKABLE static bool isBoost(int gainPercent);

  /// ASCII digits in every language.
  Q_INVOKABLE static QString number(int value);

  Q_INVOKABLE static QString spokenPercent(int percent);
  Q_INVOKABLE static QString volumeLabel(const QString& appName);
  Q_INVOKABLE static QString removeLabel(const QString& appName);
  Q_INVOKABLE static QString muteLabel(bool isMuted, const QString& appName);
  Q_INVOKABLE static QString muteHelp(bool isMuted);
  Q_INVOKABLE static QString outputLabel(const QString& appName);
  /// Two texts joined for reading aloud, such as an error's title and text.
  Q_INVOKABLE static QString spokenPair(const QString& first, const QString& second);
  Q_INVOKABLE static QString cardTitle(bool isFirstRun);

  /// The model's status in words; empty if there is nothing to say.
  static QString statusText(const MixerStatus& status);

  /// The status line; empty if there is none. A notice about the sound server replaces the model's status,
  /// and a restoration failure replaces its counts. An empty list itself says that no application has played.
  Q_INVOKABLE static QString statusLine(const QString& serverNotice, const sonvel::MixerStatus& status,
                                        const QString& restorationFailure, int rowCount);

  /// A failure in words, followed by the text with the number. `status` is the audio system's.
  Q_INVOKABLE static QString errorText(const QString& text, int status);

  /// What the user should know about a playing session; empty if all is as chosen. The names are those of the
  /// chosen device, and of the device where it is heard now, if any.
  Q_INVOKABLE static QString sessionNote(bool isPartial, bool isOutputConnected, const QString& chosenName,
                                         const QString& playingName);

  Q_INVOKABLE static bool isDenied(sonvel::AudioCaptureStatus permission);

  // Image addresses for the image providers.

  Q_INVOKABLE static QUrl symbol(const QString& name, const QColor& color);

  /// The icon of an application; grey while it is not playing.
  Q_INVOKABLE static QUrl appIcon(const sonvel::AudioApp& app, bool isPlaying);
};

} // namespace sonvel
