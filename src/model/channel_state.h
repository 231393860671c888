#pragma once

#include "audio/audio_app.h"
#include "model/call_failure.h"

#include <span>

#include <QObject>
#include <QVariant>
#include <memory>
#include <vector>

namespace sonvel {

/// One row: an application that plays or has played, and the user's settings for it. Each write to a property
/// emits its signal, even if the value is unchanged. Held by a shared_ptr. Main thread.
class ChannelState final : public QObject, public std::enable_shared_from_this<ChannelState> {
  Q_OBJECT
  Q_PROPERTY(QString stableKey READ stableKeyText CONSTANT)
  Q_PROPERTY(sonvel::AudioApp app READ app WRITE setApp NOTIFY appChanged)
  Q_PROPERTY(QString name READ name NOTIFY appChanged)
  Q_PROPERTY(quint32 objectID READ objectID NOTIFY appChanged)
  Q_PROPERTY(int gainPercent READ gainPercent WRITE setGainPercent NOTIFY gainPercentChanged)
  Q_PROPERTY(bool muted READ muted WRITE setMuted NOTIFY mutedChanged)
  Q_PROPERTY(float level READ level WRITE setLevel NOTIFY levelChanged)
  Q_PROPERTY(bool active READ active WRITE setActive NOTIFY activeChanged)
  Q_PROPERTY(bool isPlaying READ isPlaying WRITE setPlaying NOTIFY isPlayingChanged)
  Q_PROPERTY(QVariant outputUID READ outputUIDText NOTIFY outputUIDChanged)
  Q_PROPERTY(QVariant lastError READ lastErrorText NOTIFY lastErrorChanged)
  Q_PROPERTY(int lastErrorStatus READ lastErrorStatus NOTIFY lastErrorChanged)
  Q_PROPERTY(QVariant playingUID READ playingUIDText NOTIFY playbackChanged)
  Q_PROPERTY(bool isOutputConnected READ isOutputConnected NOTIFY playbackChanged)
  Q_PROPERTY(bool isPartial READ isPartial NOTIFY playbackChanged)
  Q_PROPERTY(int zeroStreak READ zeroStreak WRITE setZeroStreak NOTIFY zeroStreakChanged)
  Q_PROPERTY(int idleTicks READ idleTicks WRITE setIdleTicks NOTIFY idleTicksChanged)

 public:
  /// How the application's session plays.
  struct Playback {
    std::vector<AudioObjectID> processes = {};  ///< controlled processes; empty without a session
    std::optional<std::string> playingUID = {}; ///< the device where it is heard; none without a session
    bool isOutputConnected = true;              ///< the chosen device is connected, or none is chosen
    bool isPartial = false;                     ///< some of its streams play uncontrolled

    bool operator==(const Playback&) const = default;
  };

  explicit ChannelState(AudioApp app, int gainPercent = 100, bool muted = false,
                        std::optional<std::string> outputUID = std::nullopt);

  /// The row's identity, and the key of its remembered settings.
  const std::string& stableKey() const noexcept { return stableKey_; }

  const std::string& id() const noexcept { return stableKey_; }

  /// The process that represents the row. Its stableKey is always the row's.
  const AudioApp& app() const noexcept { return app_; }

  void setApp(AudioApp app);

  const QString& name() const noexcept { return name_; }

  AudioObjectID objectID() const noexcept { return app_.objectID; }

  /// 100 is unity gain; not clamped.
  int gainPercent() const noexcept { return gainPercent_; }

  void setGainPercent(int percent);

  bool muted() const noexcept { return muted_; }

  void setMuted(bool muted);

  /// Meter position, 0.0 to 1.0.
  float level() const noexcept { return level_; }

  void setLevel(float level);

  /// Whether the application has a session. Without one, volume, mute and route have no effect yet.
  bool active() const noexcept { return active_; }

  void setActive(bool active);

  /// False once the row is paused.
  bool isPlaying() const noexcept { return isPlaying_; }

  void setPlaying(bool isPlaying);

  /// The chosen device; none follows the system's default.
  const std::optional<std::string>& outputUID() const noexcept { return outputUID_; }

  void setOutputUID(std::optional<std::string> uid);

  /// Why the session could not be started or moved; none after a success.
  const std::optional<CallFailure>& lastError() const noexcept { return lastError_; }

  void setLastError(std::optional<CallFailure> error);

  const Playback& playback() const noexcept { return playback_; }

  void setPlayback(Playback playback);

  bool isOutputConnected() const noexcept { return playback_.isOutputConnected; }

  bool isPartial() const noexcept { return playback_.isPartial; }

  /// The processes of the row's session; without a session, the row's own process. Valid until the row
  /// next changes.
  std::span<const AudioObjectID> processes() const noexcept;

  /// The process to pass to the controller: the row's own, or another one of its session if the session lacks
  /// that.
  AudioObjectID sessionID() const;

  /// Consecutive polls in which the tap was silent although the application plays.
  int zeroStreak() const noexcept { return zeroStreak_; }

  void setZeroStreak(int polls);

  /// Consecutive reconciliations in which the application did not play.
  int idleTicks() const noexcept { return idleTicks_; }

  void setIdleTicks(int reconciliations);

  // For QML; undefined if absent.

  QString stableKeyText() const { return QString::fromStdString(stableKey_); }

  QVariant outputUIDText() const;
  QVariant playingUIDText() const;
  QVariant lastErrorText() const;

  /// The audio system's status; 0 if the failure has none.
  int lastErrorStatus() const { return lastError_ ? lastError_->status.value_or(kNoError) : kNoError; }

 Q_SIGNALS:
  void appChanged();
  void gainPercentChanged();
  void mutedChanged();
  void levelChanged();
  void activeChanged();
  void isPlayingChanged();
  void outputUIDChanged();
  void lastErrorChanged();
  void playbackChanged();
  void zeroStreakChanged();
  void idleTicksChanged();

 private:
  const std::string stableKey_;
  AudioApp app_;
  QString name_; ///< that of the application, kept because every sorting compares it
  int gainPercent_;
  bool muted_;
  float level_ = 0.0F;
  bool active_ = false;
  bool isPlaying_ = true;
  std::optional<std::string> outputUID_;
  std::optional<CallFailure> lastError_;
  Playback playback_;
  int zeroStreak_ = 0;
  int idleTicks_ = 0;
};

} // namespace sonvel
