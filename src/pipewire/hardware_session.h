#pragma once

#include "pipewire/guardian.h"
#include "pipewire/object_table.h"
#include "pipewire/pipewire_hardware.h"
#include "pipewire/reconciler.h"
#include "pipewire/server_connection.h"

#include <map>
#include <memory>
#include <set>

namespace sonvel::pipewire {

/// The state behind a PipeWireHardware. Its fields belong to whoever holds the lock of `loop`; its functions
/// are called with it held.
class PipeWireHardware::Session {
 public:
  struct Aggregate {
    AggregateDeviceDescription description;
    std::set<AudioObjectID> taps;
    std::map<IOProcID, IOProcBlock> ioProcs;
  };

  explicit Session(const ApplicationIdentity& identity);
  ~Session();
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;

  /// A name for a node that no other node has.
  std::string uniqueName(const std::string& prefix) { return prefix + runName + std::to_string(++lastName); }

  /// Ask the server something and wait for the answer: kNoError, kNotRunning or kUnspecified.
  OSStatus syncWithServer(const LoopThread::Lock& lock, LoopThread::Deadline deadline);

  /// Waits until it is true: kNoError, kNotRunning if the server has gone, kUnspecified if it takes too long.
  OSStatus waitFor(const LoopThread::Lock& lock, LoopThread::Deadline deadline,
                   const std::function<bool()>& isTrue);

  /// Has what is done to other programs' streams, and our right to it, watched over.
  void ensureGuardian();

  /// Takes all of ours out of the graph, as far as the server lets us, and ends the connection.
  void giveAllBack();

  /// Takes a started IOProc out of the graph. Its block runs no more when this gives kNoError.
  OSStatus stop(const LoopThread::Lock& lock, LoopThread::Deadline deadline, IOProcID ioProc);

  /// What a call for aggregate devices alone gives for any other object.
  OSStatus statusOfNoAggregate(AudioObjectID object) const;

  /// The sink or source behind a device object; none if it is not there now.
  std::optional<GlobalID> deviceNode(AudioObjectID device) const;

  std::vector<AudioObjectID> processObjects();
  std::vector<AudioObjectID> deviceObjects();

  /// What the server knows of a process, by any of its clients; none if it has gone.
  const AudioClient* clientOf(AudioObjectID process) const;

  bool isRunningOutput(AudioObjectID process) const;

  const ApplicationIdentity& identity;
  LoopThread loop;
  Graph graph;
  Reconciler reconciler;
  ServerState state;
  std::unique_ptr<ServerConnection> server;
  ObjectIDs ids;
  ObjectTable processes;
  ObjectTable devices;
  std::map<AudioObjectID, Aggregate> aggregates;
  IOProcID lastIOProc = 0;
  const std::string runName; ///< in the name of every node of ours; no other run has the same
  std::uint32_t lastName = 0;
  std::unique_ptr<Guardian> guardian; ///< from the first tap on
};

/// When a call that starts now must have been answered.
LoopThread::Deadline deadlineFromNow();

} // namespace sonvel::pipewire
