#pragma once

#include "audio/app_discovery.h"
#include "audio/output_devices.h"
#include "engine/hardware_error.h"
#include "engine/session_report.h"
#include "engine/tap_session.h"
#include "engine/teardown_result.h"
#include "platform/clock.h"
#include "platform/executor.h"

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
/// controlled, by its process object.
///
/// Every member is called on the executor alone, which debug builds assert, and blocks as the audio system
/// does. Held by a shared_ptr. Destroying the controller takes no session down; it only ends the retrying.
class HardwareController final : public std::enable_shared_from_this<HardwareController> {
 public:
  /// Makes no call of the audio system. The retrying of failed teardowns enters through `executor` at the
  /// times of `clock`. The environment's referents and the clock outlive the controller.
  HardwareController(AudioEnvironment environment, Clock& clock, std::weak_ptr<Executor> executor);
  ~HardwareController();
  HardwareController(const HardwareController&) = delete;
  HardwareController& operator=(const HardwareController&) = delete;

  // Channels.

  /// Takes the application off its own device and plays it on `outputUID`, or on the device that is the
  /// default now, times `gain` (linear, clamped to 0.0 to 2.0) unless muted. A session that it has is removed
  /// first. Throws HardwareError; then nothing new is left behind, and the application has no session unless
  /// its former one could not be removed.
  void addChannel(AudioApp app, float gain, bool muted, std::optional<std::string> outputUID);

  /// Gives the application back to its own device. None if it has no session. A session that can't be taken
  /// down stays, and is retried every two seconds.
  std::optional<HardwareTeardownResult> removeChannel(AudioObjectID appID);

  /// Removes every channel, in the order of their IDs; one result for each. Those that fail stay and are
  /// retried.
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

  /// Keeps settings for an application. Nothing uses them yet: no session is started from them. Replaces what
  /// was kept for the key.
  void keepSettings(const std::string& key, float gain, bool muted, std::optional<std::string> outputUID);

  void forgetSettings(const std::string& key);

  // Reports. Each replaces the one before; null: none. The observer is called as work of the executor of this
  // controller and must neither block nor throw: it passes on what it hears, for example by Relay::bind.

  /// Calls `observer` with the state of a session when a call of this controller or a retry starts it, fails
  /// to start it or ends it, and at once for each session that exists. Changes of devices, routes elsewhere,
  /// processes, gain and mute are not reported yet, nor are teardowns that fail.
  void onSessionChanged(SessionObserver observer);

  /// Calls `observer` once, now, with the devices that a session can play on. Later changes are not reported
  /// yet.
  void onOutputDevicesChanged(std::function<void(std::vector<AudioOutputDevice>)> observer);

  // Queries.

  /// The device that was asked for. None if it follows the default device, or there is no session.
  std::optional<std::string> outputUID(AudioObjectID appID) const;

  bool isControlled(AudioObjectID appID) const;

  /// In no order of meaning.
  std::vector<AudioObjectID> controlledAppIDs() const;

  /// The inPeak of each session, 0.0 before its first cycle. Reading resets nothing.
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
  void assertOnExecutor() const;
  void report(const TapSession& session, bool exists, std::optional<std::string> error = std::nullopt) const;
  const TapSession* session(AudioObjectID appID) const;

  // Steps of addChannel, in this order. Each throws HardwareError.
  void createTap(TapSession& session);
  void createAggregateDevice(TapSession& session);
  IOProcID installIOProc(TapSession& session);
  void startDevice(AudioObjectID device, IOProcID ioProc);

  HardwareTeardownResult teardown(TapSession& session);
  void recordTeardownFailure(const HardwareTeardownResult& result);
  void scheduleTeardownRetry();
  void retryTeardown();
  void finishTeardownRetry();
  void finishProbe(std::uint64_t number);

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

  const AudioEnvironment environment_;
  Clock& clock_;
  const std::weak_ptr<Executor> executor_;

  /// All IOProcs are on one queue: the callbacks of two sessions never run at the same time.
  const IOQueue ioQueue_{"com.quellmarsh.sonvel.ioproc", QualityOfService::userInteractive};

  std::map<AudioObjectID, std::unique_ptr<TapSession>> sessions_; ///< by the application's objectID
  std::unique_ptr<Timer> teardownRetryTask_;                      ///< present while the retrying goes on
  std::optional<std::string> restorationFailure_;
  std::map<std::uint64_t, ListeningProbe> listeningProbes_; ///< by number
  std::uint64_t lastProbe_ = 0;

  struct Settings {
    float gain;
    bool muted;
    std::optional<std::string> outputUID;
  };

  std::map<std::string, Settings> keptSettings_; ///< by stable key
  SessionObserver sessionObserver_;
  std::function<void(std::vector<AudioOutputDevice>)> devicesObserver_;
};

} // namespace sonvel
