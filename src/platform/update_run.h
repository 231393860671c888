#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace sonvel {

/// How far an update has come.
enum class UpdateStage {
  idle,
  checking,
  upToDate,
  needsNewerSystem,
  available, ///< waiting for the user's decision
  downloading,
  verifying,
  ready, ///< verified; waiting for the user to install it
  installing,
  restarting, ///< installed; the program is asked to quit and then starts as the new version
  handedOver, ///< passed to the package installer
  failed,
};

/// Why an update was not found, downloaded or installed, or was undone.
enum class UpdateFailure {
  noNetwork,
  insecureConnection,
  serverRefused,
  tooSlow,
  interrupted,
  insecureRedirect,
  tooManyRedirects,
  feedTooLarge,
  feedNotSigned, ///< signed with none of this build's keys
  feedUnreadable,
  feedOfOtherProgram,
  feedExpired,
  feedOlderThanSeen, ///< the feed itself, or everything in it
  insecureDownload,
  incompleteOffer, ///< an item lacks a usable version, length, hash or architecture
  downloadTooLarge,
  wrongLength,
  wrongContent,
  noSpace,
  wrongKindOfFile,
  cannotReplace,
  noPackageInstaller,
  newVersionNotStarted, ///< undone, like the next two: the previous version is back
  newVersionNotReady,
  newVersionDied,
};

/// Everything that is shown of an update.
struct UpdateState {
  UpdateStage stage = UpdateStage::idle;
  bool isVisible = false; ///< the user asked for it, or an update is available
  bool isUnasked = false; ///< the user did not ask: it takes no key until the user activates it
  bool isPackage = false; ///< a package installer will install it
  std::string installedVersion;
  std::string offeredVersion; ///< one display line of at most 64 characters; set from stage available on
  std::string notes;          ///< plain text without control or direction characters; may be empty
  std::int64_t receivedBytes = 0;
  std::int64_t totalBytes = 0;
  std::optional<UpdateFailure> failure; ///< in stage failed

  friend bool operator==(const UpdateState&, const UpdateState&) = default;
};

/// Receives news of an update. Main thread.
class UpdateObserver {
 public:
  virtual ~UpdateObserver() = default;

  /// The run's state has changed.
  virtual void updateStateChanged() = 0;

  /// The user asked again for what is already shown.
  virtual void updateAttentionWanted() = 0;
};

/// One update run: the course of an update from check to installation, controlled by the user. Main thread.
class UpdateRun {
 public:
  virtual ~UpdateRun() = default;

  /// The current state.
  virtual const UpdateState& state() const noexcept = 0;

  /// The user accepts: downloads what is available, installs what is ready, checks again after a failure. No
  /// effect in other stages. Does not wait.
  virtual void proceed() = 0;

  /// The user declines or closes the result: stops the work, drops the download and returns to idle. An
  /// installation that can no longer be stopped goes on and stays visible. Does not wait.
  virtual void cancel() = 0;

  /// Calls `observer` for every change from now on. It must live until another one, or null, is set.
  virtual void setObserver(UpdateObserver* observer) noexcept = 0;
};

/// Shows a run to the user.
class UpdateSurface {
 public:
  virtual ~UpdateSurface() = default;
};

/// Creates a surface; the run outlives it.
using MakeUpdateSurface = std::function<std::unique_ptr<UpdateSurface>(UpdateRun&)>;

} // namespace sonvel
