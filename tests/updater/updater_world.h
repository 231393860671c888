#pragma once

#include "desktop/temporary_folder.h"
#include "session/event_wait.h"
#include "simulated/manual_clock.h"
#include "updater/appcast_updater.h"
#include "updater/feed_server.h"
#include "updater/memory_preferences.h"
#include "updater/signing.h"
#include "updater/update_cycle.h"

#include <QDir>
#include <QFile>
#include <vector>

namespace sonvel::updater {

using session::waitUntil;

struct RecordingPackageInstaller final : PackageInstaller {
  bool install(const std::filesystem::path& package, std::function<void()> whenDone) override {
    if (!takes) return false;
    packages.push_back(package);
    finished = std::move(whenDone);
    return true;
  }

  bool takes = true;
  std::vector<std::filesystem::path> packages;
  std::function<void()> finished;
};

/// One item of a feed, good unless a test changes it.
struct FeedItem {
  QString version = QStringLiteral("1.1");
  QString channel = {};
  QString minimumSystemVersion = {};
  QString address;
  qint64 length = 0;
  QByteArray signature;
};

/// A program of version 1.0 in a folder of its own, a server with a feed that offers 1.1, and what a cycle
/// needs besides.
class UpdaterWorld {
 public:
  explicit UpdaterWorld(const std::optional<QSslConfiguration>& security,
                        Installation::Kind kind = Installation::Kind::singleFile);

  UpdateCycle& cycle() { return *cycle_; }

  UpdateStage stage() const { return cycle_->state().stage; }

  FeedServer& server() { return server_; }

  QUrl feedURL() const { return server_.url(QStringLiteral("/appcast.xml")); }

  UpdaterEnvironment environment();

  /// A good item for the file of 1.1.
  FeedItem goodItem() const;
  static QByteArray feedOf(const QList<FeedItem>& items);

  void serveFeed(const QByteArray& feed) { server_.set(QStringLiteral("/appcast.xml"), {.body = feed}); }

  void serveFile(const QByteArray& file) { server_.set(QStringLiteral("/update"), {.body = file}); }

  void serveGood();

  bool waitFor(UpdateStage stage) {
    return waitUntil([&] {
             return cycle_->state().stage == stage || cycle_->state().stage == UpdateStage::failed;
           }) &&
           cycle_->state().stage == stage;
  }

  /// Goes from a user's check to `stage` with what the server has.
  void advanceTo(UpdateStage stage);

  QByteArray installedProgram() const { return contentOf(places_.program()); }

  /// The names in the program's folder, hidden ones too.
  QStringList programFolder() const;

  /// Everything in the download folder, at any depth.
  QStringList downloads() const;

  static QByteArray contentOf(const std::filesystem::path& file);

  const QByteArray oldFile = QByteArray("\x7f"
                                        "ELF 1.0");
  QByteArray newFile = QByteArray("\x7f"
                                  "ELF 1.1 ") +
                       QByteArray(300'000, 'n');
  SigningKey key;
  simulated::ManualClock clock;
  MemoryPreferences preferences;
  RecordingPackageInstaller packages;
  Relaunch relaunch;
  int quitRequests = 0;
  std::set<std::string> allowedChannels;
  QString systemVersion = QStringLiteral("6.1.0");
  desktop::TemporaryFolder folder;

 private:
  struct Places {
    std::filesystem::path root;

    std::filesystem::path program() const { return root / "bin" / "program"; }

    std::filesystem::path downloads() const { return root / "downloads"; }
  };

  Places places_;
  Installation::Kind kind_;
  FeedServer server_;
  std::unique_ptr<UpdateCycle> cycle_;
};

} // namespace sonvel::updater
