#include "updater/updater_world.h"

#include <gmock/gmock.h>

#include <QDBusConnection>
#include <QDBusMessage>
#include <QProcess>
#include <fstream>

namespace sonvel::updater {
namespace {

using testing::Contains;
using testing::HasSubstr;

/// Two programs on a bus and a server of their own, and a maker with two keys who signs with the tool.
class SelfUpdate : public testing::Test {
 protected:
  void SetUp() override {
    bus_.start(QStringLiteral("dbus-daemon"), {"--session", "--nofork", "--print-address"});
    ASSERT_TRUE(waitUntil([&] { return bus_.canReadLine(); }));
    busAddress_ = QString::fromUtf8(bus_.readLine().trimmed());
    folder_.write("trusted.pem", serverCertificate().localCertificate().toPem().toStdString());
    folder_.writeProgram("bin/program", program("1.0").toStdString());
    const QByteArray first = sign({"new-key", path("first.key")});
    const QByteArray second = sign({"new-key", path("second.key")});
    folder_.write("information.json",
                  R"({"SUFeedURL": ")" + server_.url("/appcast.xml").toStdString() +
                      R"(", "SUPublicEDKey": ")" + first.toStdString() +
                      R"(", "AppUpdateAdditionalPublicEDKey": ")" + second.toStdString() +
                      R"(", "AppUpdateChannel": "beta", "AppUpdateReplacesProgramFile": true})");
  }

  void TearDown() override {
    QDBusConnection::disconnectFromBus(QStringLiteral("test"));
    bus_.kill();
    bus_.waitForFinished();
  }

  QString path(const char* name) const { return QString::fromStdString(folder_.path(name)); }

  /// As large as real ones: what follows an executable's own parts is not looked at.
  static QByteArray program(const char* version) {
    return contentOf(SONVEL_UPDATING_PROGRAM) + QByteArray(4'000'000, 'x') + '\n' + version;
  }

  static QByteArray sign(const QStringList& arguments) {
    QProcess tool;
    tool.start(QStringLiteral(SONVEL_SIGN_FEED), arguments);
    EXPECT_TRUE(tool.waitForFinished());
    EXPECT_EQ(tool.exitCode(), 0) << tool.readAllStandardError().toStdString();
    return tool.readAllStandardOutput().trimmed();
  }

  /// Publishes one version in a feed that the tool describes and signs.
  void publish(const char* version, qint64 counter, const char* key,
               const QByteArray& expires = "2100-01-01T00:00:00Z") {
    const QByteArray address = QByteArray("/") + version;
    const QByteArray content = program(version);
    server_.set(address, {.body = content});
    const QByteArray described =
        sign({"describe", QString::fromStdString(folder_.write("file", content.toStdString()))});
    const QByteArray item = "<item><sparkle:version>" + QByteArray(version) +
                            "</sparkle:version><sparkle:channel>beta</sparkle:channel><sonvel:architecture>" +
                            QSysInfo::buildCpuArchitecture().toUtf8() +
                            "</sonvel:architecture><enclosure url=\"" + server_.url(address) + "\" " +
                            described + "/></item>";
    const QByteArray feed = feedText("com.quellmarsh.sonvel", counter, expires, item);
    const QString file = QString::fromStdString(folder_.write("appcast.xml", feed.toStdString()));
    sign({"sign", file, path(key)});
    serveFeed();
  }

  void serveFeed() { server_.set("/appcast.xml", {.body = contentOf(folder_.path("appcast.xml"))}); }

  /// Starts what lies there as the program, until the log has `last`; then lets what runs by then end.
  void runUntil(const std::string& last) {
    std::ofstream(folder_.path("log"), std::ios::trunc).flush();
    QProcess first;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("SONVEL_TEST_FOLDER"), path(""));
    environment.insert(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"), busAddress_);
    environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
    environment.insert(QStringLiteral("QT_QUICK_BACKEND"), QStringLiteral("software"));
    first.setProcessEnvironment(environment);
    first.setProcessChannelMode(QProcess::ForwardedChannels);
    first.start(path("bin/program"), QStringList());
    EXPECT_TRUE(waitUntil([&] { return testing::Matches(Contains(HasSubstr(last)))(log()); }))
        << testing::PrintToString(log());
    const bool isReplaced = testing::Matches(Contains(HasSubstr("is installed")))(log());
    EXPECT_TRUE(!isReplaced || first.state() == QProcess::NotRunning || first.waitForFinished());
    auto bus = QDBusConnection::connectToBus(busAddress_, QStringLiteral("test"));
    bus.call(QDBusMessage::createMethodCall("com.quellmarsh.sonvel", "/com/quellmarsh/sonvel",
                                            "com.quellmarsh.sonvel", "Quit"));
    EXPECT_TRUE(first.state() == QProcess::NotRunning || first.waitForFinished());
    EXPECT_EQ(first.exitCode(), 0);
    EXPECT_TRUE(waitUntil([&] { return testing::Matches(HasSubstr("ends"))(log().back()); }));
  }

  std::vector<std::string> log() const {
    std::vector<std::string> lines;
    std::ifstream file(folder_.path("log"));
    for (std::string line; std::getline(file, line);)
      lines.push_back(line);
    return lines;
  }

  void expectProgram(const char* version) const {
    EXPECT_TRUE(contentOf(folder_.path("bin/program")).endsWith(QByteArray("\n") + version)) << version;
    EXPECT_EQ(QDir(path("bin")).entryList(QDir::Files | QDir::Hidden), QStringList("program"));
  }

  FeedServer server_;
  desktop::TemporaryFolder folder_;
  QProcess bus_;
  QString busAddress_;
};

TEST_F(SelfUpdate, goesFromVersionToVersionAndBackFromThoseThatDoNotWork) {
  publish("1.1", 1, "first.key");
  runUntil("1.1: Sonvel is up to date");
  EXPECT_THAT(log(), testing::IsSupersetOf({testing::StartsWith("1.0: Sonvel 1.1 is available"),
                                            testing::StartsWith("1.0: Sonvel 1.1 is ready to install")}));
  expectProgram("1.1");

  const std::string replayed = contentOf(folder_.path("appcast.xml")).toStdString();
  publish("1.2-dies", 2, "second.key"); // the key has changed
  runUntil("1.1: Sonvel couldn't be updated | The new version ended within a minute");
  expectProgram("1.1");

  publish("1.3-hangs", 3, "second.key");
  runUntil("1.1: Sonvel couldn't be updated | The new version didn't become ready");
  expectProgram("1.1");

  folder_.write("appcast.xml", replayed);
  serveFeed();
  runUntil("The update server offers something older than it did before");

  publish("1.2", 4, "first.key");
  runUntil("The update server offers something older than it did before");

  const QDateTime soon = QDateTime::currentDateTimeUtc().addSecs(2);
  publish("1.4", 5, "first.key", soon.toString(Qt::ISODate).toUtf8());
  ASSERT_TRUE(waitUntil([&] { return QDateTime::currentDateTimeUtc() > soon; }));
  runUntil("The list of updates has expired");

  publish("1.4", 6, "first.key");
  runUntil("1.4: Sonvel is up to date");
  expectProgram("1.4");
}

} // namespace
} // namespace sonvel::updater
