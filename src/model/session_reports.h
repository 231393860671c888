#pragma once

#include "audio/output_devices.h"
#include "engine/session_report.h"
#include "model/mixer_dependencies.h"
#include "platform/relay.h"

#include <map>

namespace sonvel {

/// The controller's last report of each session. A report that arrives during a call of the model about the
/// same application waits until that call has ended, because the user's latest choice is newer than the
/// report. Part of the model. Main thread.
class SessionReports {
 public:
  /// Which parts of a report are outdated by the model's own calls.
  struct Age {
    bool hasWaited = false;  ///< for a call: gain and mute are outdated, and the caller knows the error
    bool isRouteOld = false; ///< a call has chosen a route since
  };

  /// Called with each report when no call delays it.
  using Follow = std::function<void(const SessionReport& report, Age age)>;
  using FollowDevices = std::function<void(std::vector<AudioOutputDevice>)>;
  using FollowRestoration = std::function<void(std::optional<std::string>)>;

  /// While it exists, reports of its application wait. It must not outlive the SessionReports.
  class Hold {
   public:
    /// `choosesRoute`: the call chooses a route, so the route in delayed reports is outdated.
    Hold(SessionReports& reports, std::string key, bool choosesRoute = false);
    ~Hold();
    Hold(const Hold&) = delete;
    Hold& operator=(const Hold&) = delete;

   private:
    SessionReports& reports_;
    const std::string key_;
    const bool choosesRoute_;
  };

  /// `dependencies` outlives this object.
  SessionReports(const MixerDependencies& dependencies, Follow follow, FollowDevices followDevices,
                 FollowRestoration followRestoration);

  /// Requests reports from the controller; only the first call has an effect.
  void start();

  /// The session of that key; null if there is none, or while a call about it runs.
  const SessionReport* session(const std::string& key) const;

  /// Whether one session has all these processes, according to the key's last report, even a delayed one.
  bool isOneSession(const std::string& key, std::initializer_list<AudioObjectID> processes) const;

  /// Makes session() return null for that key until the next report of a session.
  void forgetSession(const std::string& key);

 private:
  struct Entry {
    SessionReport report = {};
    int holds = 0;
    int routeHolds = 0;
    bool isWaiting = false;
    bool isRouteOld = false;
  };

  void take(SessionReport report);

  const MixerDependencies& dependencies_;
  const Follow follow_;
  const FollowDevices followDevices_;
  const FollowRestoration followRestoration_;
  bool isStarted_ = false;
  std::map<std::string, Entry> entries_; ///< by stable key
  const Relay relay_;
};

} // namespace sonvel
