#pragma once

#include "audio/output_devices.h"
#include "model/channel_list.h"
#include "model/mixer_dependencies.h"
#include "model/mixer_status.h"
#include "model/permission_flow.h"
#include "model/polling.h"
#include "model/session_reports.h"

#include <QCollator>

namespace sonvel {

/// The rows, and everything that the panel shows and does.
///
/// Held by a shared_ptr and by each of its running tasks, so it is destroyed on the main thread when the last
/// of them ends. Main thread; no member waits for the audio system. Each write to a property emits its
/// signal, even if the value is unchanged.
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
  Q_PROPERTY(sonvel::MixerStatus status READ status NOTIFY statusChanged)
  Q_PROPERTY(QString restorationFailure READ restorationFailure NOTIFY restorationFailureChanged)
  Q_PROPERTY(bool updatesAvailable READ updatesAvailable CONSTANT)

 public:
  static constexpr const char* firstRunKey = PermissionFlow::firstRunKey;

  /// Only reads the first-run preference.
  explicit MixerViewModel(MixerDependencies dependencies);

  /// Cancels the polling and the permission monitor, which may be sleeping. Removes no tap: see
  /// teardownForQuit().
  ~MixerViewModel() override;

  MixerViewModel(const MixerViewModel&) = delete;
  MixerViewModel& operator=(const MixerViewModel&) = delete;

  ChannelList* channels() noexcept { return &channels_; }

  const ChannelList* channels() const noexcept { return &channels_; }

  /// The default output device's volume, 0.0 to 1.0.
  double masterVolume() const noexcept { return masterVolume_; }

  /// Whether the default output device has a volume.
  bool masterSupported() const noexcept { return masterSupported_; }

  const std::vector<AudioOutputDevice>& outputDevices() const noexcept { return outputDevices_; }

  AudioCaptureStatus permission() const noexcept { return permission_.status(); }

  bool permissionGranted() const noexcept { return permission_.isGranted(); }

  bool isRequestingPermission() const noexcept { return permission_.isRequesting(); }

  bool isFirstRun() const noexcept { return permission_.isFirstRun(); }

  /// The content of the status line.
  const MixerStatus& status() const noexcept { return status_; }

  /// What to tell the user while an application could not be given back and is tried again; else empty.
  const QString& restorationFailure() const noexcept { return restorationFailure_; }

  bool updatesAvailable() const noexcept { return updatesAvailable_; }

  /// The panel has opened: updates everything and starts polling. The first call starts the permission
  /// monitor.
  Q_INVOKABLE void onAppear();

  /// The panel has closed: stops polling unless isWatched. The taps stay, and the permission monitor goes on.
  Q_INVOKABLE void onDisappear();

  /// Updates everything, as opening the panel does, but does not start polling. The caller keeps the model
  /// alive while awaiting.
  QCoro::Task<> refresh();

  /// Whether someone besides the panel wants all changes. Then the model polls as it does for the panel; one
  /// loop serves both.
  void setWatched(bool isWatched);

  /// Whether the model polls or is about to, so that the meters are current.
  bool isFollowed() const noexcept { return (isPanelOpen_ || isWatched_) && !isQuitting_; }

  /// Cancels the polling and the permission monitor, and removes every tap. Completes when each removal has
  /// been tried once. No tap is started after this call.
  QCoro::Task<> teardownForQuit();

  // User actions. Each changes the model before it returns and does not wait for the hardware. A null channel
  // is ignored.

  /// In percent; stored as given, the engine clamps it to 0 to 200.
  Q_INVOKABLE void setGain(int percent, sonvel::ChannelState* channel);

  Q_INVOKABLE void toggleMute(sonvel::ChannelState* channel);

  /// Removes the row and forgets its settings. The object lives until the event loop next runs.
  Q_INVOKABLE void dismissChannel(sonvel::ChannelState* channel);

  /// None follows the system output.
  void setOutput(const std::optional<std::string>& uid, ChannelState* channel);

  /// For QML; undefined and null are none.
  Q_INVOKABLE void setOutput(const QVariant& uid, sonvel::ChannelState* channel);

  /// The display text of a route.
  QString outputName(const std::optional<std::string>& uid) const;

  /// For QML; undefined and null are none.
  Q_INVOKABLE QString outputName(const QVariant& uid) const;

  /// The name of a device that is or was connected since the program's start. "The chosen device" for any
  /// other; empty for undefined and null.
  Q_INVOKABLE QString knownDeviceName(const QVariant& uid) const;

  /// The default output device's volume, 0.0 to 1.0.
  Q_INVOKABLE void setMaster(double value);

  /// Sets every row to 100 percent, unmuted.
  Q_INVOKABLE void resetAllVolumes();

  /// Sends every row back to the system output, one after the other; each row changes when it is reached.
  /// Failures are not shown.
  Q_INVOKABLE void everythingToSystemOutput();

  /// Asks for the capture permission; the answer changes the properties.
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
  void restorationFailureChanged();

 private:
  friend class MixerInspector; // gives tests access to what no view reads

  /// The last settings of a key; a new row of that key gets them.
  struct RememberedSettings {
    int gainPercent = 100;
    bool muted = false;

    bool operator==(const RememberedSettings&) const = default;
  };

  /// The settings that a session starts with.
  struct ChannelSettings {
    explicit ChannelSettings(const ChannelState& row);
    explicit ChannelSettings(const SessionReport& report);

    int gainPercent;
    bool muted;
    std::optional<std::string> outputUID;

    bool operator==(const ChannelSettings&) const = default;
  };

  // Coroutines; the caller keeps the model alive while awaiting.

  void cancelTasks();
  void startFollowing();
  void stopPolling();
  QCoro::Task<> bootstrap();
  QCoro::Task<> bringUpToDate();
  QCoro::Task<> refreshMaster();
  QCoro::Task<> rebuild(ChannelList::Row row);
  QCoro::Task<> handlePermissionRevocation();

  void followSession(const SessionReport& report, SessionReports::Age age);
  void followProcess(ChannelState& row, const SessionReport& report);
  void followSettings(ChannelState& row, const SessionReport& report, SessionReports::Age age);
  static void followError(ChannelState& row, const SessionReport& report);
  static void revive(ChannelState& row);
  void catchUp(ChannelState& row, const ChannelSettings& known);
  void sendLevel(const ChannelState& row, const ChannelSettings& known);

  // Reconciliation: updates the rows from the applications that play.
  QCoro::Task<> reconcile();
  ChannelList::Row rowFor(const std::string& key, const AudioApp& app,
                          const std::vector<ChannelList::Row>& rowsBefore);
  QCoro::Task<> pauseMissingRows(const std::unordered_set<std::string_view>& keys);
  QCoro::Task<> pause(ChannelList::Row row);
  QCoro::Task<> startTap(ChannelList::Row row);
  bool isWanted(const std::string& key, AudioObjectID objectID) const;
  void sortRows();
  MixerStatus rowCounts() const;

  void remember(const ChannelState& row);
  using Call = std::function<void(HardwareController&)>;
  static QCoro::Task<> send(std::shared_ptr<MixerViewModel> model, std::string key, Call call,
                            bool choosesRoute = false);
  void sendGain(const ChannelState& row);
  void sendMute(const ChannelState& row);
  void sendRemoval(const std::string& key, AudioObjectID objectID);
  static QCoro::Task<> sendOutput(std::shared_ptr<MixerViewModel> model, ChannelList::Row row);
  QCoro::Task<> moveAllToSystemOutput();

  // The call that makes the controller keep the settings of a row without a session.
  Call keeping(const ChannelState& row) const;
  void chooseRoute(ChannelState& row, const std::optional<std::string>& uid);
  void keep(const ChannelState& row, bool choosesRoute = false);
  void keepRows();
  void keepPausedRows();

  QVariantList outputDeviceMaps() const;
  void setMasterVolume(double volume);
  void setMasterSupported(bool isSupported);
  void setOutputDevices(std::vector<AudioOutputDevice> devices);
  void setStatus(MixerStatus status);

  const MixerDependencies dependencies_;
  const QCollator nameOrder_;
  const bool updatesAvailable_;

  ChannelList channels_;
  double masterVolume_ = 1.0;
  bool masterSupported_ = true;
  std::vector<AudioOutputDevice> outputDevices_;
  std::map<std::string, std::string> deviceNames_; ///< by UID, of all devices seen so far
  MixerStatus status_;
  QString restorationFailure_;
  std::map<std::string, RememberedSettings> rememberedSettings_; ///< by stable key
  std::unordered_set<AudioObjectID> audibleIDs_;                 ///< at the last reconciliation
  PermissionFlow permission_;
  Polling polling_;
  bool isPanelOpen_ = false;
  bool isWatched_ = false;
  bool isQuitting_ = false;
  bool wasGranted_ =
      /// whether the permission was granted when the settings of paused rows were last passed to the
      /// controller
      false;
  SessionReports reports_;
};

} // namespace sonvel
