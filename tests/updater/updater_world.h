#pragma once

#include "desktop/temporary_folder.h"
#include "session/event_wait.h"
#include "signing.h"
#include "simulated/manual_clock.h"
#include "updater/appcast_updater.h"
#include "updater/feed_server.h"
#include "updater/memory_preferences.h"
#include "updater/sparkle_update_controller.h"

#include <QDir>
#include <QFile>
#include <vector>

namespace sonvel::updater {

using session::waitUntil;
using signing::SecretKey;
using signing::signedFeed;

/// One item of a feed, good unless a test changes it.
struct FeedItem {
  QString version = QStringLiteral("1.1");
  QString channel = {};
  QString minimumSystemVersion = {};
  QString architecture = QStringLiteral("test-cpu");
  QString address = {};
  qint64 length = 0;
  QByteArray hash = {};
  QByteArray more = {}; ///< elements of the item
};

/// A feed, good unless a test changes it.
struct Feed {
  QList<FeedItem> items = {};
  qint64 counter = 10;
  QByteArray expires = "2030-01-01T00:00:00Z";
  QByteArray product = "com.example.program";
  QByteArray more = {}; ///< elements of the feed

  QByteArray xml() const;
};

struct RecordingPackageInstaller final : PackageInstaller {
  bool install(std::shared_ptr<const VerifiedUpdate> package) override {
    if (takes) packages.push_back(std::move(package));
    return takes;
  }

  bool takes = true;
  std::vector<std::shared_ptr<const VerifiedUpdate>> packages;
};

/// A program of version 1.0 in a folder of its own, a server with a feed that offers 1.1, and an updater.
class UpdaterWorld {
 public:
  explicit UpdaterWorld(const std::optional<QSslConfiguration>& security = std::nullopt,
                        Installation::Kind kind = Installation::Kind::singleFile);

  UpdaterEnvironment environment();

  /// Another run of the program, with the present keys and channels.
  void start();

  UpdateCycle& cycle() { return updater_->cycle(); }

  const UpdateState& state() { return cycle().state(); }

  FeedServer& server() { return server_; }

  /// A good item for newFile.
  FeedItem item(const char* version = "1.1") const;

  void serveText(const QByteArray& feed) { server_.set(QStringLiteral("/appcast.xml"), {.body = feed}); }

  void serve(const Feed& feed) { serveText(signedFeed(feed.xml(), {key})); }

  void serveFile(const QByteArray& file) { server_.set(QStringLiteral("/update"), {.body = file}); }

  /// A good feed that offers newFile.
  void serveGood();

  int checks() const { return server_.requestCount(QStringLiteral("/appcast.xml")); }

  bool waitFor(UpdateStage stage);

  /// A user's check, and all that follows until `stage`.
  void advanceTo(UpdateStage stage);

  /// Ends in a failure after nothing was installed.
  void expectFailure(UpdateFailure failure);

  QByteArray installedProgram() const { return contentOf(program()); }

  static QByteArray contentOf(const std::filesystem::path& file);

  /// The names in the program's folder, hidden ones too.
  QStringList programFolder() const;

  const QByteArray oldFile = QByteArrayLiteral("\x7f"
                                               "ELF 1.0");
  QByteArray newFile = QByteArrayLiteral("\x7f"
                                         "ELF 1.1 ") +
                       QByteArray(300'000, 'n');
  SecretKey key;
  std::string additionalKey;
  std::chrono::system_clock::time_point calendarTime{std::chrono::sys_days(std::chrono::year(2027) / 1 / 15)};
  simulated::ManualClock clock;
  MemoryPreferences preferences;
  RecordingPackageInstaller packages;
  Relaunch relaunch;
  int quitRequests = 0;
  desktop::TemporaryFolder folder;
  std::shared_ptr<SonvelSparkleChannelDelegate> channels =
      std::make_shared<SonvelSparkleChannelDelegate>(std::set<std::string>());

 private:
  std::filesystem::path program() const { return folder.path("bin/program"); }

  Installation::Kind kind_;
  FeedServer server_;
  std::unique_ptr<AppcastUpdater> updater_;
};

} // namespace sonvel::updater
