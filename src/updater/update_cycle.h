#pragma once

#include "platform/update_session.h"
#include "updater/feed_check.h"
#include "updater/program_file.h"
#include "updater/relay.h"
#include "updater/update_choice.h"
#include "updater/update_download.h"
#include "updater/updater_environment.h"
#include "updater/verification.h"

#include <QNetworkAccessManager>
#include <functional>
#include <memory>
#include <set>
#include <string>

namespace sonvel::updater {

/// One way from a check to an installed update, again and again. Whatever goes wrong ends in stage failed
/// with nothing installed and no file left, and the next check starts anew. Main thread.
class UpdateCycle final : public UpdateSession {
 public:
  /// Who wants a check.
  enum class Asker { user, schedule };

  using AllowedChannels = std::function<std::set<std::string>()>;

  /// A check has come to its end; `succeeded` says whether the feed could be read.
  using CheckEnded = std::function<void(bool succeeded)>;

  /// `key` is none where the source's can't be read, and then nothing passes.
  UpdateCycle(const UpdaterEnvironment& environment, QUrl feed, std::optional<PublicKey> key,
              AllowedChannels allowedChannels, CheckEnded checkEnded = {});
  ~UpdateCycle() override;

  UpdateCycle(const UpdateCycle&) = delete;
  UpdateCycle& operator=(const UpdateCycle&) = delete;

  const UpdateState& state() const noexcept override { return state_; }

  /// Starts a check, unless an update is already on its way; the user sees it from now on if they ask.
  void check(Asker asker);

  void proceed() override;

  /// An installation that has passed the point of no return ends first.
  void cancel() override;

  void setObserver(UpdateObserver* observer) noexcept override { observer_ = observer; }

 private:
  using Verification = std::variant<VerifiedUpdate, UpdateFailure>;

  void tellChange();
  void enter(UpdateStage stage);
  void fail(UpdateFailure failure);
  void showChoice(const FeedCheck::Outcome& outcome);
  void offer(const AppcastItem& item);
  void download();
  void verify(std::optional<UpdateFailure> failure);
  void install();
  void finishProgram(std::optional<UpdateFailure> failure);
  void finishPackage(const std::variant<std::filesystem::path, UpdateFailure>& package);
  void discardWork();

  Expectation expectation() const { return {item_.length, item_.signature}; }

  UpdaterEnvironment environment_;
  QUrl feed_;
  std::optional<PublicKey> key_;
  AllowedChannels allowedChannels_;
  CheckEnded checkEnded_;
  UpdateObserver* observer_ = nullptr;
  UpdateState state_;
  AppcastItem item_;
  QNetworkAccessManager network_;
  std::unique_ptr<Relay> relay_; ///< of the work that runs aside
  std::unique_ptr<FeedCheck> feedCheck_;
  std::unique_ptr<UpdateDownload> download_;
  std::shared_ptr<PointOfNoReturn> point_;
};

} // namespace sonvel::updater
