#pragma once

#include "platform/clock.h"
#include "platform/preferences.h"
#include "platform/update_run.h"
#include "updater/appcast.h"
#include "updater/feed_signature.h"
#include "updater/fetch.h"
#include "updater/installation.h"
#include "updater/main_thread.h"
#include "updater/package_installer.h"
#include "updater/relaunch.h"
#include "updater/update_choice.h"
#include "updater/update_file.h"

#include <QNetworkAccessManager>
#include <chrono>
#include <functional>
#include <memory>
#include <set>
#include <string>
#include <variant>

namespace sonvel::updater {

/// What an updater needs from the program and system. The referents outlive the updater.
struct UpdaterEnvironment {
  Clock& clock;
  Preferences& preferences;
  PackageInstaller& packageInstaller;
  Relaunch& relaunch;
  std::function<void()> requestQuit; ///< asks the program to quit, which then performs `relaunch`
  std::function<std::chrono::system_clock::time_point()> calendarTime;
  Installation installation;
  QString product; ///< the program's identifier
  QString installedVersion;
  QString systemVersion; ///< compared with minimum system versions
  QString architecture;
};

/// The newest feed counter and version ever seen, over all runs; older ones are rejected. Main thread.
class SeenReleases {
 public:
  explicit SeenReleases(Preferences& preferences)
      : preferences_(preferences) {}

  qint64 counter() const;
  std::optional<ProgramVersion> version() const;

  /// Stores it if it is higher than before.
  void noteCounter(qint64 counter);
  void noteVersion(const QString& version);

 private:
  Preferences& preferences_;
};

/// From a check to an installed update. Every failure ends in stage failed, with nothing installed and no
/// file left; the next check starts anew. Main thread.
class UpdateCycle final : public UpdateRun {
 public:
  /// Who requests a check.
  enum class Asker { user, schedule };

  using AllowedChannels = std::function<std::set<std::string>()>;

  /// A check has ended. `succeeded`: the feed could be read and no faulty item in it might be newer.
  using CheckEnded = std::function<void(bool succeeded)>;

  /// The feed must be signed with one of `keys`.
  UpdateCycle(const UpdaterEnvironment& environment, QUrl feed, QList<PublicKey> keys,
              AllowedChannels allowedChannels, CheckEnded checkEnded = {});
  ~UpdateCycle() override;

  UpdateCycle(const UpdateCycle&) = delete;
  UpdateCycle& operator=(const UpdateCycle&) = delete;

  const UpdateState& state() const noexcept override { return state_; }

  /// Starts a check unless an update is in progress; if the user asks, it becomes visible.
  void check(Asker asker);

  /// Shows that a newer version was undone. Call only before the first check.
  void showReturn(UpdateFailure reason);

  void proceed() override;

  /// No effect after an installation has passed the point of no return.
  void cancel() override;

  void setObserver(UpdateObserver* observer) noexcept override { observer_ = observer; }

 private:
  void tellChange();
  void enter(UpdateStage stage);
  void fail(UpdateFailure failure);
  void endCheck(std::optional<UpdateFailure> failure);
  std::variant<Appcast, UpdateFailure> readFeed();
  Choice choose(const Appcast& appcast) const;
  void offer(const AppcastItem& item);
  void download();
  void verify();
  void install();
  void finishProgram(std::optional<UpdateFailure> failure);
  void discardWork();
  QDateTime now() const;

  UpdaterEnvironment environment_;
  QUrl feed_;
  QList<PublicKey> keys_;
  AllowedChannels allowedChannels_;
  CheckEnded checkEnded_;
  SeenReleases seen_;
  UpdateObserver* observer_ = nullptr;
  UpdateState state_;
  AppcastItem item_;
  QNetworkAccessManager network_;
  QByteArray feedText_; ///< received so far
  std::unique_ptr<UpdateFile> file_;
  std::unique_ptr<Fetch> fetch_; ///< first for the feed, then for the file
  std::shared_ptr<const VerifiedUpdate> verified_;
  std::shared_ptr<PointOfNoReturn> point_;
  std::unique_ptr<Relay> relay_; ///< for work on other threads; replaced when that work is cancelled
};

} // namespace sonvel::updater
