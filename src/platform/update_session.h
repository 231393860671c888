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
  available, ///< waits for the user to take it
  downloading,
  verifying,
  ready, ///< verified; waits for the user to have it installed
  installing,
  restarting, ///< installed; the program is asked to end and starts again as the new one
  handedOver, ///< the package installer has it
  failed,
};

/// What can keep an update from being found, fetched or installed, and what can undo it.
enum class UpdateFailure {
  noNetwork,
  insecureConnection,
  serverRefused,
  tooSlow,
  interrupted,
  insecureRedirect,
  tooManyRedirects,
  feedTooLarge,
  feedNotSigned, ///< by none of this build's keys
  feedUnreadable,
  feedOfOtherProgram,
  feedExpired,
  feedOlderThanSeen, ///< the feed itself, or all that it offers
  insecureDownload,
  incompleteOffer, ///< an item without a usable version, length, hash or architecture
  downloadTooLarge,
  wrongLength,
  wrongContent,
  noSpace,
  wrongKindOfFile,
  cannotReplace,
  noPackageInstaller,
  newVersionNotStarted, ///< undone, as the next two: the previous version is back
  newVersionNotReady,
  newVersionDied,
};

/// All that there is to show of an update.
struct UpdateState {
  UpdateStage stage = UpdateStage::idle;
  bool isVisible = false; ///< the user asked for it, or there is something they may take
  bool isUnasked = false; ///< it came up by itself: no key may act on it before the user turns to it
  bool isPackage = false; ///< it goes to a package installer
  std::string installedVersion;
  std::string offeredVersion; ///< for people: one line of at most 64 characters; from stage available on
  std::string notes;          ///< plain text without control or direction characters; may be empty
  std::int64_t receivedBytes = 0;
  std::int64_t totalBytes = 0;
  std::optional<UpdateFailure> failure; ///< of stage failed

  friend bool operator==(const UpdateState&, const UpdateState&) = default;
};

/// Is told about an update. Main thread.
class UpdateObserver {
 public:
  virtual ~UpdateObserver() = default;

  /// The session's state has changed.
  virtual void updateStateChanged() = 0;

  /// The user asked again for what they see already.
  virtual void updateAttentionWanted() = 0;
};

/// The updates of this program, from the check to the installation, as the user controls them. Main thread.
class UpdateSession {
 public:
  virtual ~UpdateSession() = default;

  /// As it is now.
  virtual const UpdateState& state() const noexcept = 0;

  /// The user takes what is offered: downloads what is available, installs what is ready, checks again after
  /// a failure. Nothing in the other stages. Does not wait.
  virtual void proceed() = 0;

  /// The user declines, or has read the result: stops the work, drops the download, and is idle again. An
  /// installation that can no longer be stopped goes on and stays visible. Does not wait.
  virtual void cancel() = 0;

  /// Tells `observer` about every change from now on. It must live until another one, or null, is set.
  virtual void setObserver(UpdateObserver* observer) noexcept = 0;
};

/// Where the user sees a session.
class UpdateSurface {
 public:
  virtual ~UpdateSurface() = default;
};

/// Makes a surface for a session, which lives longer.
using MakeUpdateSurface = std::function<std::unique_ptr<UpdateSurface>(UpdateSession&)>;

} // namespace sonvel
