#pragma once

#include "pipewire/guardian.h"
#include "pipewire/object_table.h"
#include "pipewire/pipewire_hardware.h"
#include "pipewire/process_joining.h"
#include "pipewire/property_listeners.h"
#include "pipewire/reconciler.h"
#include "pipewire/server_connection.h"
#include "pipewire/server_edits.h"

#include <map>
#include <memory>
#include <set>

namespace sonvel::pipewire {

/// The state of a PipeWireHardware. Access its members and call its functions only with the lock of `loop`
/// held.
class PipeWireHardware::State {
 public:
  struct Aggregate {
    AggregateDeviceDescription description;
    std::set<AudioObjectID> taps;
    std::map<IOProcID, IOProcBlock> ioProcs;
  };

  explicit State(const ApplicationIdentity& identity);
  ~State();
  State(const State&) = delete;
  State& operator=(const State&) = delete;

  const GraphIndex& index() const { return reconciler.index(); }

  /// A node name that no other node has.
  std::string uniqueName(const std::string& prefix) { return prefix + runName + std::to_string(++lastName); }

  /// Asks the server and waits for its answer: kNoError, kNotRunning or kUnspecified.
  OSStatus syncWithServer(const LoopThread::Lock& lock, LoopThread::Deadline deadline);

  /// Waits until `isTrue`: kNoError, kNotRunning if the server has gone, kUnspecified after the deadline.
  OSStatus waitFor(const LoopThread::Lock& lock, LoopThread::Deadline deadline,
                   const std::function<bool()>& isTrue);

  /// As waitFor, but at most 200 ms while the server answers quickly.
  OSStatus waitShortly(const LoopThread::Lock& lock, const std::function<bool()>& isTrue);

  /// Starts watching our changes to other programs' streams (the guardian), and our rights.
  void ensureGuardian();

  /// Removes started IOProcs from the graph, and the nodes of taps that no other IOProc reads; in a
  /// configuration this happens at commit. After kNoError outside a configuration their blocks are not called
  /// any more.
  OSStatus stop(const LoopThread::Lock& lock, const std::set<IOProcID>& ioProcs);

  /// Ends a configuration: retired objects go, started ones take their streams.
  OSStatus commit(const LoopThread::Lock& lock);

  /// The status for a call on something that is not an aggregate device.
  OSStatus statusOfNoAggregate(AudioObjectID object) const;

  /// A tap that has not been destroyed; null if there is none.
  DesiredTap* tap(AudioObjectID object);

  /// The node of a device object; none if it is not connected.
  std::optional<GlobalID> deviceNode(AudioObjectID device) const;

  std::vector<AudioObjectID> processObjects();
  std::vector<AudioObjectID> deviceObjects();

  /// What the server knows of a process, from any of its clients; none if it has gone.
  const AudioClient* clientOf(AudioObjectID process) const;

  const ApplicationIdentity& identity;
  LoopThread loop;
  Graph graph;
  LoopAlarm alarm;
  Reconciler reconciler;
  ProcessJoining joining;
  PropertyListeners listeners;
  ServerState serverState;
  std::unique_ptr<ServerConnection> server;
  std::unique_ptr<ServerEdits> edits;
  ObjectIDs ids;
  ObjectTable processes;
  ObjectTable devices;
  std::map<AudioObjectID, Aggregate> aggregates;
  bool isConfiguring = false;
  IOProcID lastIOProc = 0;
  const std::string runName; ///< part of the names of all our nodes; unique to this run
  std::uint32_t lastName = 0;
  Guardian guardian; ///< watches from the first tap on

 private:
  void look();
  void forgetRetired();
  void callListeners();
  void giveAllBack();

  bool wasReady_ = false;
};

/// When a call that starts now must be answered.
LoopThread::Deadline deadlineFromNow();

} // namespace sonvel::pipewire
