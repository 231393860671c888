#pragma once

#include "desktop/temporary_folder.h"
#include "signing.h"
#include "simulated/manual_clock.h"
#include "simulated/preferences.h"
#include "updater/appcast_updater.h"
#include "updater/feed_server.h"
#include "updater/sparkle_update_controller.h"

#include <QDir>
#include <QFile>
#include <QTest>
#include <vector>

namespace sonvel::updater {

using signing::SecretKey;

/// Runs the event loop until `isSo`; false on a timeout.
inline bool waitUntil(const std::function<bool()>& isSo) {
  return QTest::qWaitFor(isSo, 20'000);
}

const QByteArray kOldFile = "\x7f"
                            "ELF 1.0";
const QByteArray kNewFile = "\x7f"
                            "ELF 1.1 " +
                            QByteArray(300'000, 'n');

inline QByteArray contentOf(const std::filesystem::path& file) {
  QFile opened(file);
  EXPECT_TRUE(opened.open(QIODevice::ReadOnly)) << file;
  return opened.readAll();
}

struct RecordingPackageInstaller final : PackageInstaller {
  bool install(std::shared_ptr<const VerifiedUpdate> package) override {
    if (takes) taken = std::move(package);
    return takes;
  }

  bool takes = true;
  std::shared_ptr<const VerifiedUpdate> taken;
};

/// A program of version 1.0 in a temporary folder, a server with a feed that offers 1.1, and an updater.
class UpdaterWorld {
 public:
  explicit UpdaterWorld(Installation::Kind installationKind = Installation::Kind::singleFile,
                        bool isSecure = true)
      : server(isSecure)
      , kind_(installationKind) {
    folder.writeProgram("bin/program", kOldFile.toStdString());
    serveGood();
    start();
  }

  /// A new run of the program, with the current channels.
  void start() {
    updater_.reset();
    updater_ = std::make_unique<AppcastUpdater>(
        UpdaterEnvironment{.clock = clock,
                           .preferences = preferences,
                           .packageInstaller = packages,
                           .relaunch = relaunch,
                           .requestQuit = [this] { ++quitRequests; },
                           .calendarTime = [this] { return calendarTime; },
                           .installation = {kind_, folder.path("bin/program")},
                           .product = QStringLiteral("com.example.program"),
                           .installedVersion = QStringLiteral("1.0"),
                           .systemVersion = QStringLiteral("6.1.0"),
                           .architecture = QStringLiteral("test-cpu")},
        UpdateSource{server.url("/appcast.xml").toStdString(), key.publicKey()}, channels,
        MakeUpdateSurface());
  }

  UpdateCycle& cycle() { return updater_->cycle(); }

  const UpdateState& state() { return cycle().state(); }

  /// An item that offers newFile, correct unless `more` changes it.
  QByteArray item(const QByteArray& version = "1.1", const QByteArray& more = {}) const {
    return "<item><sparkle:version>" + version + "</sparkle:version><sonvel:architecture>test-cpu" +
           "</sonvel:architecture>" + more + "<description><![CDATA[<p>New:</p><ul><li>more</li></ul>]]>" +
           "</description><enclosure url=\"" + server.url("/update") + "\" length=\"" +
           QByteArray::number(newFile.size()) + "\" sonvel:sha256=\"" + signing::hashText(newFile) +
           "\"/></item>";
  }

  /// Unsigned.
  static QByteArray feed(const QByteArray& items, qint64 counter = 10) {
    return "<rss><channel><sonvel:product>com.example.program</sonvel:product><sonvel:counter>" +
           QByteArray::number(counter) +
           "</sonvel:counter><sonvel:expires>2030-01-01T00:00:00Z</sonvel:expires>" + items +
           "</channel></rss>\n";
  }

  /// Signed with two keys, as makers do during a change of keys.
  QByteArray signedFeed(const QByteArray& text) const {
    return signing::signedFeed(text, {SecretKey(), key});
  }

  void serveText(const QByteArray& text) { server.set("/appcast.xml", {.body = text}); }

  void serve(const QByteArray& items, qint64 counter = 10) { serveText(signedFeed(feed(items, counter))); }

  /// Serves a correct feed that offers newFile.
  void serveGood() {
    serve(item());
    server.set("/update", {.body = newFile});
  }

  int checks() const { return server.requestCount("/appcast.xml"); }

  bool waitFor(UpdateStage stage) {
    return waitUntil([&] { return state().stage == stage || state().stage == UpdateStage::failed; }) &&
           state().stage == stage;
  }

  /// The user's next action: requests a check, accepts the offer, or retries.
  void proceed() {
    state().stage == UpdateStage::idle ? cycle().check(UpdateCycle::Asker::user) : cycle().proceed();
  }

  void advanceTo(UpdateStage target) {
    while (state().stage != target) {
      const UpdateStage before = state().stage;
      proceed();
      ASSERT_TRUE(waitUntil([&] { return state().stage != before || state().stage == target; }));
      ASSERT_NE(state().stage, UpdateStage::failed) << static_cast<int>(*state().failure);
    }
  }

  /// Expects this failure, and that nothing is installed.
  void expectFailure(UpdateFailure failure) {
    ASSERT_TRUE(waitFor(UpdateStage::failed)) << "stage " << static_cast<int>(state().stage);
    EXPECT_EQ(static_cast<int>(*state().failure), static_cast<int>(failure));
    EXPECT_TRUE(state().isVisible);
    EXPECT_EQ(quitRequests, 0);
    EXPECT_EQ(installedProgram(), kOldFile);
    EXPECT_EQ(programFolder(), QStringList("program"));
  }

  QByteArray installedProgram() const { return contentOf(folder.path("bin/program")); }

  /// All file names in the program's folder, including hidden ones.
  QStringList programFolder() const {
    return QDir(QString::fromStdString(folder.path("bin"))).entryList(QDir::Files | QDir::Hidden, QDir::Name);
  }

  QByteArray newFile = kNewFile;
  SecretKey key;
  std::chrono::system_clock::time_point calendarTime{std::chrono::sys_days(std::chrono::year(2027) / 1 / 15)};
  simulated::ManualClock clock;
  simulated::SimulatedPreferences preferences;
  RecordingPackageInstaller packages;
  Relaunch relaunch;
  int quitRequests = 0;
  desktop::TemporaryFolder folder;
  FeedServer server;
  std::shared_ptr<SonvelSparkleChannelDelegate> channels =
      std::make_shared<SonvelSparkleChannelDelegate>(std::set<std::string>());

 private:
  Installation::Kind kind_;
  std::unique_ptr<AppcastUpdater> updater_;
};

} // namespace sonvel::updater
