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

/// The state behind a PipeWireHardware. Its fields belong to whoever holds the lock of `loop`; its functions
/// are called with it held.
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

  /// A name for a node that no other node has.
  std::string uniqueName(const std::string& prefix) { return prefix + runName + std::to_string(++lastName); }

  /// Ask the server something and wait for the answer: kNoError, kNotRunning or kUnspecified.
  OSStatus syncWithServer(const LoopThread::Lock& lock, LoopThread::Deadline deadline);

  /// Waits until it is true: kNoError, kNotRunning if the server has gone, kUnspecified if it takes too long.
  OSStatus waitFor(const LoopThread::Lock& lock, LoopThread::Deadline deadline,
                   const std::function<bool()>& isTrue);

  /// As waitFor, but no longer than 200 ms while the server answers quickly.
  OSStatus waitShortly(const LoopThread::Lock& lock, const std::function<bool()>& isTrue);

  /// Has what is done to other programs' streams, and our right to it, watched over.
  void ensureGuardian();

  /// Takes started IOProcs out of the graph, and the nodes of their taps that nobody else reads. In a
  /// configuration they go when it is committed. Their blocks run no more when this gives kNoError outside.
  OSStatus stop(const LoopThread::Lock& lock, const std::set<IOProcID>& ioProcs);

  /// Ends a configuration: what was retired in it goes, what was started takes its streams.
  OSStatus commit(const LoopThread::Lock& lock);

  /// What a call for aggregate devices alone gives for any other object.
  OSStatus statusOfNoAggregate(AudioObjectID object) const;

  /// A tap that has not been destroyed; null if there is none.
  DesiredTap* tap(AudioObjectID object);

  /// The sink or source behind a device object; none if it is not there now.
  std::optional<GlobalID> deviceNode(AudioObjectID device) const;

  std::vector<AudioObjectID> processObjects();
  std::vector<AudioObjectID> deviceObjects();

  /// What the server knows of a process, by any of its clients; none if it has gone.
  const AudioClient* clientOf(AudioObjectID process) const;

  bool isRunningOutput(AudioObjectID process) const;

  /// The device that the process was sent to; 0 if it follows the default.
  AudioObjectID chosenDevice(AudioObjectID process);

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
  const std::string runName; ///< in the name of every node of ours; no other run has the same
  std::uint32_t lastName = 0;
  Guardian guardian; ///< watches from the first tap on

 private:
  void look();
  void forgetRetired();
  void callListeners();
  void giveAllBack();

  bool wasReady_ = false;
};

/// When a call that starts now must have been answered.
LoopThread::Deadline deadlineFromNow();

} // namespace sonvel::pipewire
