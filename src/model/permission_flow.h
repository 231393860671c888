#pragma once

#include "model/mixer_dependencies.h"
#include "model/task.h"
#include "platform/relay.h"

#include <QObject>

namespace sonvel {

/// The capture permission: asks the user and monitors the answer. Each write to a value emits its signal,
/// even if unchanged. Main thread.
///
/// Part of the model. `self` below shares ownership of the whole model, so that a running task keeps it
/// alive.
class PermissionFlow final : public QObject {
  Q_OBJECT

 public:
  using Self = std::shared_ptr<PermissionFlow>;

  /// How the model reacts to changes. The model is kept alive until then.
  struct Consequences {
    std::function<QCoro::Task<>()> granted; ///< after the user's answer
    std::function<QCoro::Task<>()> revoked;
  };

  /// The preference that records whether the welcome was shown.
  static constexpr const char* firstRunKey = "com.quellmarsh.sonvel.didOnboard";

  /// Only reads that preference.
  PermissionFlow(const MixerDependencies& dependencies, Consequences consequences);

  /// The last known status.
  AudioCaptureStatus status() const noexcept { return status_; }

  /// Whether taps may be created.
  bool isGranted() const noexcept { return status_ == AudioCaptureStatus::authorized; }

  /// True from the user's request until its answer.
  bool isRequesting() const noexcept { return isRequesting_; }

  bool isFirstRun() const noexcept { return isFirstRun_; }

  /// Reads the permission. Only the monitor acts on a revocation.
  void refresh();

  /// Asks the user. Where that is impossible, tests whether capturing works.
  void request(const Self& self);

  /// Starts, once, the task that reads the permission now and every five seconds.
  void ensureMonitor(const Self& self);

  void cancelMonitor();

 Q_SIGNALS:
  void statusChanged();
  void isGrantedChanged();
  void isRequestingChanged();
  void isFirstRunChanged();

 private:
  static QCoro::Task<> probe(Self self);
  static QCoro::Task<> monitor(std::weak_ptr<PermissionFlow> weakSelf, Clock& clock, Executor& mainThread,
                               std::stop_token cancellation);

  // Coroutines; the caller keeps the model alive while awaiting.
  QCoro::Task<> finishRequest(bool isAllowed);
  QCoro::Task<> check();

  void markOnboarded();
  void setStatus(AudioCaptureStatus status);
  void setRequesting(bool isRequesting);

  const MixerDependencies& dependencies_;
  const Consequences consequences_;
  AudioCaptureStatus status_ = AudioCaptureStatus::unknown;
  bool isRequesting_ = false;
  bool isFirstRun_;
  std::optional<Task> monitorTask_;
  const Relay relay_; ///< for the user's answer, which may come on any thread
};

} // namespace sonvel
