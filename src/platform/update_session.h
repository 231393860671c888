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

/// What can keep an update from being found, fetched or installed.
enum class UpdateFailure {
  noNetwork,
  insecureConnection,
  serverRefused,
  tooSlow,
  interrupted,
  insecureRedirect,
  tooManyRedirects,
  feedTooLarge,
  feedUnreadable,
  feedNotFeed,
  feedWithEntities,
  insecureDownload,
  downloadWithoutLength,
  downloadWithoutSignature,
  downloadTooLarge,
  wrongLength,
  wrongSignature,
  noFolder,
  diskFull,
  changedAfterCheck,
  wrongKindOfFile,
  cannotReplace,
  noPackageInstaller,
};

/// All that there is to show of an update.
struct UpdateState {
  UpdateStage stage = UpdateStage::idle;
  bool isVisible = false; ///< whether the user is to see it: what they asked for, and what they may take
  bool isPackage = false; ///< it goes to a package installer
  std::string installedVersion;
  std::string offeredVersion; ///< as people read it; from stage available on
  std::string notes;          ///< plain text, never to be shown as anything else; may be empty
  std::int64_t receivedBytes = 0;
  std::int64_t totalBytes = 0;
  std::optional<UpdateFailure> failure; ///< of stage failed

  friend bool operator==(const UpdateState&, const UpdateState&) = default;
};

/// Hears of an update. Main thread.
class UpdateObserver {
 public:
  virtual ~UpdateObserver() = default;

  /// The session's state is another one.
  virtual void updateStateChanged() = 0;

  /// The user asked again for what they see already.
  virtual void updateAttentionWanted() = 0;
};

/// One update after another, from the check to the installation, as its user steers it. Main thread.
class UpdateSession {
 public:
  virtual ~UpdateSession() = default;

  /// As it is now.
  virtual const UpdateState& state() const noexcept = 0;

  /// The user takes what is offered: downloads what is available, installs what is ready, checks again after
  /// a failure. Nothing in the other stages. Does not wait.
  virtual void proceed() = 0;

  /// The user wants none of it, or has seen it: stops what runs, deletes what was downloaded, and is idle
  /// again. What can no longer be stopped goes on, and what is left to show of it stays. Does not wait.
  virtual void cancel() = 0;

  /// Tells `observer`, which lives longer than the session or until another one is set, of every change from
  /// now on. Null: nobody.
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
