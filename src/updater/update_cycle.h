#pragma once

#include "platform/clock.h"
#include "platform/preferences.h"
#include "platform/update_session.h"
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

/// What an updater needs of the program and the system around it. Everything referred to lives longer than
/// the updater.
struct UpdaterEnvironment {
  Clock& clock;
  Preferences& preferences;
  PackageInstaller& packageInstaller;
  Relaunch& relaunch;
  std::function<void()> requestQuit; ///< asks the program to end; it then performs `relaunch`
  std::function<std::chrono::system_clock::time_point()> calendarTime;
  Installation installation;
  QString product; ///< the program's identifier
  QString installedVersion;
  QString systemVersion; ///< is compared with minimum system versions
  QString architecture;
};

/// The counter of the newest feed and the newest version that were seen, over all runs of the program.
/// Nothing lower is taken. Main thread.
class SeenReleases {
 public:
  explicit SeenReleases(Preferences& preferences)
      : preferences_(preferences) {}

  qint64 counter() const;
  std::optional<ProgramVersion> version() const;

  /// Keeps what is higher than before.
  void noteCounter(qint64 counter);
  void noteVersion(const QString& version);

 private:
  Preferences& preferences_;
};

/// The way from a check to an installed update. Every failure ends in stage failed with nothing installed and
/// no file left, and the next check starts anew. Main thread.
class UpdateCycle final : public UpdateSession {
 public:
  /// Who wants a check.
  enum class Asker { user, schedule };

  using AllowedChannels = std::function<std::set<std::string>()>;

  /// A check has ended; `succeeded` says whether the feed could be read and had no faulty item in it that may
  /// be newer than the others.
  using CheckEnded = std::function<void(bool succeeded)>;

  /// One of `keys` has to have signed the feed.
  UpdateCycle(const UpdaterEnvironment& environment, QUrl feed, QList<PublicKey> keys,
              AllowedChannels allowedChannels, CheckEnded checkEnded = {});
  ~UpdateCycle() override;

  UpdateCycle(const UpdateCycle&) = delete;
  UpdateCycle& operator=(const UpdateCycle&) = delete;

  const UpdateState& state() const noexcept override { return state_; }

  /// Starts a check, unless an update is already on its way; if the user asks, they see it from now on.
  void check(Asker asker);

  /// Shows that a newer version was undone. Only before the first check.
  void showReturn(UpdateFailure reason);

  void proceed() override;

  /// Has no effect once an installation has passed the point of no return.
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
  QByteArray feedText_; ///< what has arrived of it
  std::unique_ptr<UpdateFile> file_;
  std::unique_ptr<Fetch> fetch_; ///< of the feed, and then of the file
  std::shared_ptr<const VerifiedUpdate> verified_;
  std::shared_ptr<PointOfNoReturn> point_;
  std::unique_ptr<Relay> relay_; ///< of the work on other threads; another one when that is given up
};

} // namespace sonvel::updater
