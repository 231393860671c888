#pragma once

#include "audio/audio_app.h"
#include "audio/audio_environment.h"
#include "audio/output_devices.h"
#include "engine/hardware_error.h"
#include "engine/session_report.h"
#include "engine/teardown_result.h"
#include "platform/clock.h"
#include "platform/relay.h"

#include <atomic>
#include <map>
#include <set>

namespace sonvel {

/// What the render callback of one channel recorded in its last cycle.
struct ChannelMetrics {
  float inPeak = 0.0F; ///< largest absolute input sample, before gain and mute; linear
  std::int32_t cycles = 0;
  std::int32_t outBufs = 0;

  bool operator==(const ChannelMetrics&) const = default;
};

/// A process, and the largest absolute sample of its session.
using ProcessPeak = std::pair<AudioObjectID, float>;

class ApplicationProcesses;
class CaptureProbe;
class ChangeListeners;
struct OutputSituation;
struct ChoiceElsewhere;
struct TapSession;

/// Owns every tap, aggregate device and IOProc of the program: one session per controlled application, with
/// all its processes. In calls, any process of the application identifies it, including one that has ended.
///
/// The first call that creates or keeps something, or asks for reports, starts listening to the audio system.
/// From then on each session is kept at the device chosen here or in another mixer while that is connected,
/// otherwise at the default device.
///
/// Every member is called on the executor only (asserted in debug builds) and blocks as the audio system
/// does. Destroying the controller ends listening and retrying but removes no session.
class HardwareController final {
 public:
  /// Does not call the audio system. Listeners and timers post their work to `executor`. The environment's
  /// referents and the clock outlive the controller.
  HardwareController(AudioEnvironment environment, Clock& clock, std::weak_ptr<Executor> executor);
  ~HardwareController();
  HardwareController(const HardwareController&) = delete;
  HardwareController& operator=(const HardwareController&) = delete;

  /// Takes the application off its own device and plays it on `outputUID` times `gain` (linear, clamped to
  /// 0.0 to 2.0) unless muted. Without `outputUID` it plays on the device chosen elsewhere, otherwise on the
  /// default device. An existing session is removed first. Throws HardwareError; then nothing new remains,
  /// and the application has no session unless its former one could not be removed. If it had a session or
  /// kept settings, starting is retried until it succeeds.
  void addChannel(AudioApp app, float gain, bool muted, std::optional<std::string> outputUID);

  /// Gives the application back to its own device. None if it has no session. A session that can't be removed
  /// stays and is retried every two seconds.
  std::optional<HardwareTeardownResult> removeChannel(AudioObjectID appID);

  /// Removes every channel in the order of their IDs and forgets all kept settings; one result per channel.
  /// Failed ones stay and are retried.
  std::vector<HardwareTeardownResult> teardownAll();

  /// Takes effect at the next cycle; clamped to 0.0 to 2.0. Ignored without a session.
  void setGain(float gain, AudioObjectID appID);

  /// Takes effect at the next cycle and keeps the gain. Ignored without a session.
  void setMuted(bool muted, AudioObjectID appID);

  /// Rebuilds the session on another device, which is now held as by holdRoute(); none follows the default
  /// device. Otherwise as rebuild().
  void setOutput(std::optional<std::string> uid, AudioObjectID appID);

  /// Rebuilds the session with its current settings. Ignored without a session. Throws as addChannel() does.
  void rebuild(AudioObjectID appID);

  /// Keeps settings with which a session starts as soon as the application plays, before it is heard.
  /// Replaces earlier kept settings of the key; settings that change nothing only remove them. Ignored while
  /// the application has a session, unless that session is only waiting for its removal to succeed. When the
  /// last process of a session ends, its settings are kept automatically if they change anything.
  void keepSettings(const std::string& key, float gain, bool muted, std::optional<std::string> outputUID);

  void forgetSettings(const std::string& key);

  /// Whether the route of an application is a choice made here. Then it also holds at the application's next
  /// start, even if it follows the default device while the session manager remembers another one. Until then
  /// a device chosen elsewhere counts for an application without a route. A later choice elsewhere ends it.
  void holdRoute(const std::string& key, bool holds);

  // Reports. Each setter replaces the earlier observer; null: none. The observer is called as work of this
  // controller's executor; it must not block or throw, only pass the report on, for example with Relay::bind.

  /// Calls `observer` at once with each existing session, then whenever a session starts, fails to start,
  /// ends, moves, or its processes or its route change. Changes of gain or mute alone are not reported.
  void onSessionChanged(SessionObserver observer);

  /// Calls `observer` at once and after each change with the devices on which sessions can play.
  void onOutputDevicesChanged(std::function<void(std::vector<AudioOutputDevice>)> observer);

  /// Calls `observer` at once and after each change with the text of restorationFailure().
  void onRestorationFailureChanged(std::function<void(std::optional<std::string>)> observer);

  /// The requested device. None if the session follows the default device, or there is no session.
  std::optional<std::string> outputUID(AudioObjectID appID) const;

  bool isControlled(AudioObjectID appID) const;

  /// In no particular order.
  std::vector<AudioObjectID> controlledAppIDs() const;

  /// Each session's inPeak, under each of its processes, ordered by these; 0.0 before the first cycle and
  /// while the application plays nothing. Reading resets nothing.
  std::vector<ProcessPeak> peaks() const;

  /// None without a session.
  std::optional<ChannelMetrics> metrics(AudioObjectID appID) const;

  /// A message for the user while a failed teardown is retried; none otherwise.
  std::optional<std::string> restorationFailure() const;

  /// Receives the result of a probe: whether sound was heard; none if no application played.
  using ProbeAnswer = std::function<void(std::optional<bool>)>;

  /// Listens for 600 ms to the first application that plays, without changing its sound, and calls `answer`
  /// once, as work of the executor. Other calls can run meanwhile. The result is also false if listening
  /// can't be set up, or if the controller ends first.
  void probeCapture(ProbeAnswer answer);

  // The audio system; calls made here keep their order with the controller's own.

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

  /// The settings of an application without a session.
  struct Kept {
    Settings settings;
    AudioObjectID tap = kAudioObjectUnknown; ///< standby tap: silences the application until it has a session
    bool hasFailed = false;                  ///< starting failed; retried after a delay, not at every change
  };

  void assertOnExecutor() const;
  TapSession* find(AudioObjectID appID) const;
  TapSession* findByKey(const std::string& key) const;
  static Settings settingsOf(const TapSession& session);

  /// Removes the former session, if any, and builds the new one. Returns the error, if any.
  std::optional<HardwareError> replaceSession(const TapSession* former, AudioApp app, Settings settings);
  std::unique_ptr<TapSession> buildSession(const AudioApp& app, const Settings& settings,
                                           AudioObjectID standbyTap);
  void createTap(TapSession& session);
  void createAggregateDevice(TapSession& session);
  OSStatus tryAggregateDevice(TapSession& session, const std::string& outputUID, const std::string& tapUID);

  HardwareTeardownResult teardown(TapSession& session);
  HardwareTeardownResult remove(AudioObjectID sessionID);
  std::vector<HardwareTeardownResult> takeAllDown();
  void destroyStrayTaps(std::vector<HardwareTeardownResult>& results);
  void recordTeardownFailure(const HardwareTeardownResult& result);
  void scheduleTeardownRetry();
  void retryTeardown();
  void finishProbe(std::uint64_t number);

  void startFollowing();
  void requestPass();
  void followChanges();
  void followSessions(const OutputSituation& outputs);
  void followSession(AudioObjectID sessionID, const OutputSituation& outputs);
  void followProcesses(TapSession& session, const std::vector<AudioObjectID>& processes);
  void followChoice(TapSession& session);
  std::optional<ChoiceElsewhere> readChoice(const std::string& key,
                                            const std::vector<AudioObjectID>& processes);
  void outlive(const TapSession& session);
  void noteFormerProcesses(const TapSession& session);
  void forgetGoneProcesses();
  bool listen();

  void startKept(const AudioApp& app, Settings settings);
  bool isWorthKeeping(const std::string& key, const Settings& settings) const;
  void createStandbyTap(const std::set<std::string>& bundleIDs, Kept& kept);
  void destroyStandbyTap(Kept& kept);
  void startKeptApplications();
  void scheduleFollowing();

  static SessionReport reportOf(const TapSession& session);
  void reportChanges();
  void reportDevices(const std::vector<AudioOutputDevice>& devices);
  void reportRestorationFailure();

  /// The changes that listeners recorded for the next pass.
  struct Noted {
    std::atomic<bool> isPassDue = false;
    std::atomic<bool> hasProcessListChanged = false;
  };

  const AudioEnvironment environment_;
  Clock& clock_;
  const std::weak_ptr<Executor> executor_;

  /// One queue for all IOProcs: callbacks of two sessions never run at the same time.
  const IOQueue ioQueue_{"com.quellmarsh.sonvel.ioproc", QualityOfService::userInteractive};

  std::map<AudioObjectID, std::unique_ptr<TapSession>> sessions_; ///< by the application's objectID
  std::unique_ptr<Timer> teardownRetryTask_;                      ///< set while retrying
  std::optional<std::string> restorationFailure_;
  std::vector<AudioObjectID> strayTaps_; ///< standby taps that could not be destroyed
  int configurationDepth_ = 0;

  std::map<std::uint64_t, std::unique_ptr<CaptureProbe>> probes_; ///< running probes, by number
  std::uint64_t lastProbe_ = 0;

  std::map<std::string, Kept> kept_; ///< by stable key
  std::set<std::string> heldRoutes_; ///< stable keys of applications whose route was last chosen here
  std::set<std::string>
      chosenElsewhere_; ///< stable keys of applications for which the session manager may remember a device
  std::map<std::string, std::uint32_t>
      followChosen_; ///< stable key → kProcessChoiceSerial of the last "follow" that was chosen elsewhere
  const std::unique_ptr<ApplicationProcesses> processes_;
  std::map<AudioObjectID, std::string>
      formerProcesses_; ///< process → stable key, for sessions and kept settings
  AudioObjectID lastFollowed_ = kAudioObjectUnknown; ///< the session that the last pass followed last
  const std::shared_ptr<Noted> noted_ = std::make_shared<Noted>();
  std::unique_ptr<ChangeListeners> listeners_; ///< set by startFollowing
  std::unique_ptr<Timer> followingRetry_;      ///< set while a failed start is to be retried

  SessionObserver sessionObserver_;
  std::map<std::string, SessionReport> reported_;      ///< by stable key, of sessions
  std::map<std::string, SessionReport> startFailures_; ///< by stable key, not reported yet
  std::function<void(std::vector<AudioOutputDevice>)> devicesObserver_;
  std::optional<std::vector<AudioOutputDevice>> reportedDevices_;
  std::function<void(std::optional<std::string>)> restorationObserver_;
  std::optional<std::string> reportedRestorationFailure_;

  const Relay relay_; // last member
};

} // namespace sonvel
