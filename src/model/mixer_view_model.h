#pragma once

#include "audio/audio_permission.h"
#include "model/channel_list.h"
#include "model/hardware_calls.h"
#include "model/task.h"
#include "model/update_checking.h"
#include "platform/preferences.h"

#include <QCollator>
#include <unordered_set>

namespace sonvel {

/// What the model is made with. The referents outlive the model and its tasks, and `mainThread` every answer
/// of `permission` too.
struct MixerDependencies {
  std::shared_ptr<Actor<HardwareController>> hardware;
  Executor& mainThread; ///< runs on the thread of the model
  Clock& clock;
  AudioPermission& permission;
  Preferences& preferences;
  UpdateChecking& updates;
};

/// One row for each application that plays or has played, and everything that the panel shows and does.
///
/// Held by a shared_ptr, and by each of its tasks while that task is at work: it goes when the last of them
/// lets go, on the main thread. Its end cancels no task and takes no tap down; teardownForQuit does. Main
/// thread, which no member makes wait for sound. Every write of a property is announced, also of an equal
/// value.
class MixerViewModel final : public QObject, public std::enable_shared_from_this<MixerViewModel> {
  Q_OBJECT
  Q_PROPERTY(sonvel::ChannelList* channels READ channels CONSTANT)
  Q_PROPERTY(double masterVolume READ masterVolume NOTIFY masterVolumeChanged)
  Q_PROPERTY(bool masterSupported READ masterSupported NOTIFY masterSupportedChanged)
  Q_PROPERTY(QVariantList outputDevices READ outputDeviceMaps NOTIFY outputDevicesChanged)
  Q_PROPERTY(sonvel::AudioCaptureStatus permission READ permission NOTIFY permissionChanged)
  Q_PROPERTY(bool permissionGranted READ permissionGranted NOTIFY permissionGrantedChanged)
  Q_PROPERTY(bool isRequestingPermission READ isRequestingPermission NOTIFY isRequestingPermissionChanged)
  Q_PROPERTY(bool isFirstRun READ isFirstRun NOTIFY isFirstRunChanged)
  Q_PROPERTY(QString status READ status NOTIFY statusChanged)
  Q_PROPERTY(bool updatesAvailable READ updatesAvailable CONSTANT)

 public:
  /// The key of the preference that says whether the user has been welcomed.
  static constexpr const char* firstRunKey = "com.quellmarsh.sonvel.didOnboard";

  /// Reads that preference and does nothing else.
  explicit MixerViewModel(MixerDependencies dependencies);

  /// Ends the tasks that only sleep, so that none is left to wake when the clock is gone too.
  ~MixerViewModel() override;

  MixerViewModel(const MixerViewModel&) = delete;
  MixerViewModel& operator=(const MixerViewModel&) = delete;

  ChannelList* channels() noexcept { return &channels_; }

  const ChannelList* channels() const noexcept { return &channels_; }

  /// Of the default output device, 0.0 to 1.0.
  double masterVolume() const noexcept { return masterVolume_; }

  /// Whether the default output device has a volume.
  bool masterSupported() const noexcept { return masterSupported_; }

  const std::vector<AudioOutputDevice>& outputDevices() const noexcept { return outputDevices_; }

  /// As it was learnt last.
  AudioCaptureStatus permission() const noexcept { return permission_; }

  /// Whether taps may be started.
  bool permissionGranted() const noexcept { return permissionGranted_; }

  /// From the user's request to its answer.
  bool isRequestingPermission() const noexcept { return isRequestingPermission_; }

  bool isFirstRun() const noexcept { return isFirstRun_; }

  /// One line about the whole; empty at first.
  const QString& status() const noexcept { return status_; }

  bool updatesAvailable() const noexcept { return updatesAvailable_; }

  // The life of the panel and the program.

  /// The panel has appeared: watches the permission from the first time on, brings everything up to date and
  /// polls.
  Q_INVOKABLE void onAppear();

  /// The panel has gone: ends the polling. Taps and the watch on the permission go on.
  Q_INVOKABLE void onDisappear();

  /// Ends all periodic work and gives every application its own output back; over when that has been tried.
  /// No tap is started from here on.
  QCoro::Task<> teardownForQuit();

  // What the user does. Each changes the model before it returns, and does not wait for the hardware to
  // follow. A null channel is ignored.

  /// Any percentage.
  Q_INVOKABLE void setGain(int percent, sonvel::ChannelState* channel);

  Q_INVOKABLE void toggleMute(sonvel::ChannelState* channel);

  /// Removes the row and forgets its settings. The row lives on until control is back in the event loop.
  Q_INVOKABLE void dismissChannel(sonvel::ChannelState* channel);

  /// None follows the system output.
  void setOutput(const std::optional<std::string>& uid, ChannelState* channel);

  /// For views; undefined and null are none.
  Q_INVOKABLE void setOutput(const QVariant& uid, sonvel::ChannelState* channel);

  /// What the user sees of a route.
  QString outputName(const std::optional<std::string>& uid) const;

  /// For views; undefined and null are none.
  Q_INVOKABLE QString outputName(const QVariant& uid) const;

  /// Of the default output device, 0.0 to 1.0.
  Q_INVOKABLE void setMaster(double value);

  /// Every row to 100 percent, unmuted.
  Q_INVOKABLE void resetAllVolumes();

  /// Every row back to the system output, one after the other, without a word of failures. The rows change
  /// as their turn comes.
  Q_INVOKABLE void everythingToSystemOutput();

  /// Asks for the permission to capture; the answer shows in the properties.
  Q_INVOKABLE void requestPermission();

  Q_INVOKABLE void checkForUpdates();

 Q_SIGNALS:
  void masterVolumeChanged();
  void masterSupportedChanged();
  void outputDevicesChanged();
  void permissionChanged();
  void permissionGrantedChanged();
  void isRequestingPermissionChanged();
  void isFirstRunChanged();
  void statusChanged();

 private:
  friend class MixerInspector; // lets tests read what no view does

  /// What was last chosen for a key. A new row of that key takes it over.
  struct RememberedSettings {
    int gainPercent = 100;
    bool muted = false;

    bool operator==(const RememberedSettings&) const = default;
  };

  /// What playing a row depends on.
  struct ChannelSettings {
    explicit ChannelSettings(const ChannelState& row);

    int gainPercent;
    bool muted;
    std::optional<std::string> outputUID;
  };

  /// The keys that play, each once and with its first application, in the order of the list.
  using AudibleMap = std::vector<std::pair<std::string, AudioApp>>;

  // A coroutine that is a member is awaited by one that holds the model until then.

  template <class Body> void start(Body body) { (void)startTask(dependencies_.mainThread, std::move(body)); }

  void cancelTasks();

  // Reconciliation: bringing the rows in line with the applications that play.
  QCoro::Task<> reconcile();
  ChannelList::Row rowFor(const std::string& key, const AudioApp& app,
                          const std::vector<ChannelList::Row>& rowsBefore);
  QCoro::Task<> pauseMissingRows(AudibleMap audible);
  QCoro::Task<> startTap(ChannelList::Row row);
  void catchUp(ChannelState& row, const ChannelSettings& started);
  bool hasRowFor(AudioObjectID objectID) const;
  void sortRows();
  QString rowCounts() const;

  // Polling, while the panel is there.
  void startPolling();
  static QCoro::Task<> poll(std::weak_ptr<MixerViewModel> weakModel, Clock& clock, Executor& mainThread,
                            std::stop_token cancellation);
  QCoro::Task<> pollMeters();
  QCoro::Task<> refreshMaster();

  // Actions.
  void remember(const ChannelState& row);
  void handOnGain(const ChannelState& row);
  void handOnMute(const ChannelState& row);
  void handOnOutput(ChannelState& row);
  static QCoro::Task<> moveToOutput(std::shared_ptr<MixerViewModel> model, ChannelList::Row row);
  QCoro::Task<> moveAllToSystemOutput();

  // Permission.
  void ensurePermissionMonitor();
  static QCoro::Task<> monitorPermission(std::weak_ptr<MixerViewModel> weakModel, Clock& clock,
                                         Executor& mainThread, std::stop_token cancellation);
  QCoro::Task<> checkPermission();
  QCoro::Task<> handlePermissionRevocation();
  static QCoro::Task<> receiveAnswer(std::weak_ptr<MixerViewModel> weakModel, bool isGranted);
  QCoro::Task<> probePermission();
  QCoro::Task<> finishRequest(bool isGranted);
  void markOnboarded();

  QCoro::Task<> bootstrap();

  QVariantList outputDeviceMaps() const;
  void setMasterVolume(double volume);
  void setMasterSupported(bool isSupported);
  void setOutputDevices(std::vector<AudioOutputDevice> devices);
  void setPermission(AudioCaptureStatus permission);
  void setPermissionGranted(bool isGranted);
  void setRequestingPermission(bool isRequesting);
  void setFirstRun(bool isFirstRun);
  void setStatus(QString status);

  const MixerDependencies dependencies_;
  const HardwareCalls hardware_;
  const QCollator nameOrder_;

  ChannelList channels_;
  double masterVolume_ = 1.0;
  bool masterSupported_ = true;
  std::vector<AudioOutputDevice> outputDevices_;
  AudioCaptureStatus permission_ = AudioCaptureStatus::unknown;
  bool permissionGranted_ = false;
  bool isRequestingPermission_ = false;
  bool isFirstRun_;
  QString status_;
  const bool updatesAvailable_;

  std::map<std::string, RememberedSettings> rememberedSettings_; ///< by stable key
  std::unordered_set<AudioObjectID> audibleIDs_;                 ///< at the last reconciliation
  std::optional<Task> pollTask_;
  std::optional<Task> permissionMonitorTask_;
  bool isPanelOpen_ = false;
  bool isQuitting_ = false;
};

} // namespace sonvel
