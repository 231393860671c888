#pragma once

#include "audio/app_discovery.h"
#include "engine/application_processes.h"
#include "engine/change_listeners.h"
#include "engine/hardware_error.h"
#include "engine/output_following.h"
#include "engine/session_report.h"
#include "engine/tap_session.h"
#include "engine/teardown_result.h"
#include "platform/clock.h"
#include "platform/relay.h"

#include <atomic>
#include <map>
#include <set>

namespace sonvel {

/// What the render callback of one channel saw in its last cycle.
struct ChannelMetrics {
  float inPeak = 0.0F; ///< largest absolute sample of the application, before gain and mute; linear
  std::int32_t cycles = 0;
  std::int32_t outBufs = 0;

  bool operator==(const ChannelMetrics&) const = default;
};

class CaptureProbe;

/// Owns every tap, aggregate device and IOProc of the program: one session for each application that is
/// controlled, with all processes of that application. Any of its processes names it in a call, also one that
/// has ended.
///
/// From its first call on that makes or keeps something, or asks for reports, it listens to the audio system
/// and keeps each session where it belongs: at the device that was asked for, here or in another mixer, while
/// that is connected, otherwise at the default device.
///
/// Every member is called on the executor alone, which debug builds assert, and blocks as the audio system
/// does. Destroying the controller takes no session down; it only ends the listening and the retrying.
class HardwareController final {
 public:
  /// Makes no call of the audio system. What listening and the times of `clock` bring about enters through
  /// `executor`. The environment's referents and the clock outlive the controller.
  HardwareController(AudioEnvironment environment, Clock& clock, std::weak_ptr<Executor> executor);
  ~HardwareController();
  HardwareController(const HardwareController&) = delete;
  HardwareController& operator=(const HardwareController&) = delete;

  // Channels.

  /// Takes the application off its own device and plays it on `outputUID` times `gain` (linear, clamped to
  /// 0.0 to 2.0) unless muted. Without `outputUID` it plays on the device that its user has sent it to
  /// elsewhere, otherwise on the default device. A session that it has is removed first. Throws
  /// HardwareError; then nothing new is left behind, and the application has no session unless its former one
  /// could not be removed. One that had a session, or settings that are kept, gets one as soon as that
  /// succeeds.
  void addChannel(AudioApp app, float gain, bool muted, std::optional<std::string> outputUID);

  /// Gives the application back to its own device. None if it has no session. A session that can't be taken
  /// down stays, and is retried every two seconds.
  std::optional<HardwareTeardownResult> removeChannel(AudioObjectID appID);

  /// Removes every channel, in the order of their IDs, and forgets all kept settings; one result for each
  /// channel. Those that fail stay and are retried.
  std::vector<HardwareTeardownResult> teardownAll();

  /// Takes effect at the next cycle, clamped to 0.0 to 2.0. An application without a session is ignored.
  void setGain(float gain, AudioObjectID appID);

  /// Takes effect at the next cycle and keeps the gain. An application without a session is ignored.
  void setMuted(bool muted, AudioObjectID appID);

  /// Builds the session anew on another device; none follows the default device. Otherwise as rebuild.
  void setOutput(std::optional<std::string> uid, AudioObjectID appID);

  /// Builds the session anew with everything unchanged. An application without a session is ignored. Throws
  /// as addChannel does.
  void rebuild(AudioObjectID appID);

  // Settings of applications without a session.

  /// Starts a session with these settings as soon as the application plays, before it is heard. Replaces what
  /// was kept for the key. Ignored while the application has a session, except one that is only there because
  /// it could not be taken down. The settings of a session whose processes have all ended are kept without a
  /// call if they change anything.
  void keepSettings(const std::string& key, float gain, bool muted, std::optional<std::string> outputUID);

  void forgetSettings(const std::string& key);

  // Reports. Each replaces the one before; null: none. The observer is called as work of the executor of this
  // controller and must neither block nor throw: it passes on what it hears, for example by Relay::bind.

  /// Calls `observer` at once with each session that exists, and from then on whenever there is something new
  /// of a session: it starts, fails to start, ends, moves, or its processes or its route change. A change of
  /// gain or mute alone is not reported.
  void onSessionChanged(SessionObserver observer);

  /// Calls `observer` at once, and after each change, with the devices that a session can play on.
  void onOutputDevicesChanged(std::function<void(std::vector<AudioOutputDevice>)> observer);

  /// Calls `observer` at once, and after each change, with the text of restorationFailure.
  void onRestorationFailureChanged(std::function<void(std::optional<std::string>)> observer);

  // Queries.

  /// The device that was asked for. None if it follows the default device, or there is no session.
  std::optional<std::string> outputUID(AudioObjectID appID) const;

  bool isControlled(AudioObjectID appID) const;

  /// In no order of meaning.
  std::vector<AudioObjectID> controlledAppIDs() const;

  /// The inPeak of each session for each of its processes; 0.0 before the first cycle and while the
  /// application plays nothing. Reading resets nothing.
  std::map<AudioObjectID, float> peaks() const;

  /// None if there is no session.
  std::optional<ChannelMetrics> metrics(AudioObjectID appID) const;

  /// What to tell the user while a failed teardown is being retried; none when everything is restored.
  std::optional<std::string> restorationFailure() const;

  /// What a probe gives: whether it heard something, none if nothing played that it could listen to.
  using ProbeAnswer = std::function<void(std::optional<bool>)>;

  /// Listens for 600 ms to the first application that plays, which goes on to be heard as before, and calls
  /// `answer` once, as work of the executor. Meanwhile the controller is free for other calls. False also if
  /// listening can't be set up, or if the controller ends before it is over.
  void probeCapture(ProbeAnswer answer);

  // The audio system, reached in turn with everything else.

  std::vector<AudioApp> audibleApps() const;
  std::set<AudioObjectID> audibleObjectIDs() const;
  std::vector<AudioOutputDevice> outputDevices() const;
  std::optional<float> masterVolume() const;
  bool setMasterVolume(float volume);

 private:
  struct Settings {
    float gain = 1.0F;
    bool muted = false;
    std::optional<std::string> outputUID = {};

    bool operator==(const Settings&) const = default;
  };

  /// Settings of an application without a session.
  struct Kept {
    Settings settings;
    AudioObjectID tap =
        kAudioObjectUnknown; ///< holds the application's streams silent until it has a session
    bool hasFailed = false;  ///< to start; tried again after a while, not at every change
  };

  void assertOnExecutor() const;
  TapSession* find(AudioObjectID appID) const;
  TapSession* findByKey(const std::string& key) const;
  static Settings settingsOf(const TapSession& session);

  // Building.

  /// Removes the former session, if there is one, and builds the new one. What failed, if anything.
  std::optional<HardwareError> replaceSession(const TapSession* former, const AudioApp& app,
                                              Settings settings);
  std::unique_ptr<TapSession> buildSession(const AudioApp& app, const Settings& settings,
                                           AudioObjectID waitingTap);
  void createTap(TapSession& session);
  void createAggregateDevice(TapSession& session);
  OSStatus tryAggregateDevice(TapSession& session, const std::string& outputUID, const std::string& tapUID);
  IOProcID installIOProc(TapSession& session);
  void startDevice(AudioObjectID device, IOProcID ioProc);

  // Taking down.
  HardwareTeardownResult teardown(TapSession& session);
  HardwareTeardownResult remove(AudioObjectID sessionID);
  std::vector<HardwareTeardownResult> takeAllDown();
  void destroyStrayTaps(std::vector<HardwareTeardownResult>& results);
  void recordTeardownFailure(const HardwareTeardownResult& result);
  void scheduleTeardownRetry();
  void retryTeardown();
  void finishProbe(std::uint64_t number);

  // Following.
  void startFollowing();
  void requestPass();
  void followChanges();
  void followSession(AudioObjectID sessionID, const OutputSituation& outputs);
  void followProcesses(TapSession& session, const std::vector<AudioObjectID>& processes);
  void followChoice(TapSession& session, const OutputSituation& outputs);
  std::optional<std::optional<std::string>> readChoice(const std::vector<AudioObjectID>& processes) const;
  void outlive(const TapSession& session);
  void noteFormerProcesses(const TapSession& session);
  bool listen();

  // Keeping.
  void startKept(const AudioApp& app, Settings settings);
  void letWait(const std::set<std::string>& bundleIDs, Kept& kept);
  void endWaiting(Kept& kept);
  void startKeptApplications();
  void scheduleFollowing();

  // Reporting.
  static SessionReport reportOf(const TapSession& session);
  void reportChanges();
  void reportDevices(const std::vector<AudioOutputDevice>& devices);
  void reportRestorationFailure();

  /// A probe that is listening.
  struct ListeningProbe {
    ListeningProbe(std::unique_ptr<CaptureProbe> captureProbe, std::unique_ptr<Timer> timer,
                   ProbeAnswer onAnswer);
    ~ListeningProbe();
    ListeningProbe(ListeningProbe&&) noexcept = default;
    ListeningProbe& operator=(ListeningProbe&&) noexcept = default;

    std::unique_ptr<CaptureProbe> probe;
    std::unique_ptr<Timer> wake;
    ProbeAnswer answer;
  };

  /// What the listeners have noted for the next pass.
  struct Noted {
    std::atomic<bool> isPassDue = false;
    std::atomic<bool> hasProcessListChanged = false;
  };

  const AudioEnvironment environment_;
  Clock& clock_;
  const std::weak_ptr<Executor> executor_;

  /// All IOProcs are on one queue: the callbacks of two sessions never run at the same time.
  const IOQueue ioQueue_{"com.quellmarsh.sonvel.ioproc", QualityOfService::userInteractive};

  std::map<AudioObjectID, std::unique_ptr<TapSession>> sessions_; ///< by the application's objectID
  std::unique_ptr<Timer> teardownRetryTask_;                      ///< present while the retrying goes on
  std::optional<std::string> restorationFailure_;
  std::vector<AudioObjectID> strayTaps_; ///< of kept settings, that could not be destroyed
  int configurationDepth_ = 0;

  std::map<std::uint64_t, ListeningProbe> listeningProbes_; ///< by number
  std::uint64_t lastProbe_ = 0;

  std::map<std::string, Kept> kept_; ///< by stable key
  std::map<std::string, std::string>
      overruled_; ///< by stable key: the device chosen elsewhere, not wanted here
  ApplicationProcesses processes_;
  std::map<AudioObjectID, std::string>
      formerProcesses_; ///< with the stable key, of sessions and kept settings
  const std::shared_ptr<Noted> noted_ = std::make_shared<Noted>();
  std::optional<ChangeListeners> listeners_; ///< from startFollowing on
  std::unique_ptr<Timer> followingRetry_;    ///< present while a start that has failed is to be tried again

  SessionObserver sessionObserver_;
  std::map<std::string, SessionReport> reported_;      ///< by stable key, of sessions
  std::map<std::string, SessionReport> startFailures_; ///< by stable key, not reported yet
  std::function<void(std::vector<AudioOutputDevice>)> devicesObserver_;
  std::optional<std::vector<AudioOutputDevice>> reportedDevices_;
  std::function<void(std::optional<std::string>)> restorationObserver_;
  std::optional<std::string> reportedRestorationFailure_;

  const Relay relay_; // last
};

} // namespace sonvel
