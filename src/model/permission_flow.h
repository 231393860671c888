#pragma once

#include "model/mixer_dependencies.h"
#include "model/task.h"
#include "platform/relay.h"

#include <QObject>

namespace sonvel {

/// The permission to capture: asks the user for it, and follows it while the program runs. Each write of a
/// value emits its signal, also if the value stays the same. Main thread.
///
/// A part of the model. `self` in the functions below shares the ownership of the whole model, so that a task
/// keeps the model alive while it works.
class PermissionFlow final : public QObject {
  Q_OBJECT

 public:
  using Self = std::shared_ptr<PermissionFlow>;

  /// What the model does about changes. The model is held until it has been done.
  struct Consequences {
    std::function<QCoro::Task<>()> granted; ///< after the user's answer
    std::function<QCoro::Task<>()> revoked;
  };

  /// The key of the preference that says whether the user has been welcomed.
  static constexpr const char* firstRunKey = "com.quellmarsh.sonvel.didOnboard";

  /// Reads that preference and does nothing else.
  PermissionFlow(const MixerDependencies& dependencies, Consequences consequences);

  /// The last known status.
  AudioCaptureStatus status() const noexcept { return status_; }

  /// Whether taps may be started.
  bool isGranted() const noexcept { return status_ == AudioCaptureStatus::authorized; }

  /// From the user's request to its answer.
  bool isRequesting() const noexcept { return isRequesting_; }

  bool isFirstRun() const noexcept { return isFirstRun_; }

  /// Reads the permission. Leaves it to the monitor to act on a revocation.
  void refresh();

  /// Asks the user. Where nobody can be asked, tries whether capture works.
  void request(const Self& self);

  /// Starts the task that reads the permission now and every five seconds; once.
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

  // Coroutines: the caller keeps the model alive while it awaits them.
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
  const Relay relay_; ///< of the user's answer, which comes on any thread
};

} // namespace sonvel
