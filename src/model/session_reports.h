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
  /// Which parts of a report the model's own calls have overtaken.
  struct Age {
    bool hasWaited = false;  ///< for a call: gain and mute are old, and the caller knows already what failed
    bool isRouteOld = false; ///< a call has chosen a route since
  };

  /// Called with each report as soon as no call holds it back.
  using Follow = std::function<void(const SessionReport& report, Age age)>;
  using FollowDevices = std::function<void(std::vector<AudioOutputDevice>)>;
  using FollowRestoration = std::function<void(std::optional<std::string>)>;

  /// While it exists, reports of its application wait. It ends before the SessionReports does.
  class Hold {
   public:
    /// `choosesRoute`: the call chooses a route, so that the route in a report that has waited is old.
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

  /// Asks the controller for reports, once; later calls do nothing.
  void start();

  /// The session of that key; null if there is none, or a call about it is under way.
  const SessionReport* session(const std::string& key) const;

  /// Whether one session has all these processes, by the last report of that key, which may still wait.
  bool isOneSession(const std::string& key, std::initializer_list<AudioObjectID> processes) const;

  /// Makes session() give null for that key until a session is reported again.
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
