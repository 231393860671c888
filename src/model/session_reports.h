#pragma once

#include "audio/output_devices.h"
#include "engine/session_report.h"
#include "model/mixer_dependencies.h"
#include "platform/relay.h"

#include <map>

namespace sonvel {

/// What the controller last reported of each session. A report that comes while a call of the model about the
/// same application is under way waits for the end of that call, because what the user has chosen meanwhile
/// is newer than the report. A part of the model. Main thread.
class SessionReports {
 public:
  /// What of a report may be older than what the model has done since.
  struct Age {
    bool hasWaited = false; ///< gain and mute; and the outcome of the call has said what failed
    bool isRouteOld = false;
  };

  /// Takes a report that is due.
  using Follow = std::function<void(const SessionReport& report, Age age)>;
  using FollowDevices = std::function<void(std::vector<AudioOutputDevice>)>;

  /// While it exists, reports of its application wait. The reports outlive it.
  class Hold {
   public:
    /// For a call that chooses a route if `choosesRoute`.
    Hold(SessionReports& reports, std::string key, bool choosesRoute = false);
    ~Hold();
    Hold(const Hold&) = delete;
    Hold& operator=(const Hold&) = delete;

   private:
    SessionReports& reports_;
    const std::string key_;
    const bool choosesRoute_;
  };

  /// `dependencies` outlives the reports.
  SessionReports(const MixerDependencies& dependencies, Follow follow, FollowDevices followDevices);

  /// Asks the controller for reports, once; later calls do nothing.
  void start();

  /// The session of that key; null if there is none, or a call about it is under way.
  const SessionReport* session(const std::string& key) const;

  /// Whether the last report of that key, which may be waiting, is of a session with all these processes.
  bool isOneSession(const std::string& key, std::initializer_list<AudioObjectID> processes) const;

  /// From now on there is none, until one is reported again.
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
  bool isStarted_ = false;
  std::map<std::string, Entry> entries_; ///< by stable key
  const Relay relay_;
};

} // namespace sonvel
