#include "desktop/temporary_folder.h"
#include "updater/test_certificates.h"
#include "updater/updater_world.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QDirIterator>
#include <QProcess>
#include <fstream>

namespace sonvel::updater {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

/// A program as large as real ones: what follows an executable's own parts is not looked at.
QByteArray largeProgram(const char* file) {
  return UpdaterWorld::contentOf(file) + QByteArray(8'000'000, 'x');
}

/// A program of version 1.0 in a folder that holds everything it knows, and a server that has 1.1
/// and 1.2-beta.
class SelfUpdate : public testing::Test {
 protected:
  void SetUp() override {
    server_.set("/1.1", {.body = largeProgram(SONVEL_TEST_1_1)});
    server_.set("/1.2-beta", {.body = largeProgram(SONVEL_TEST_1_2_BETA)});
    server_.set("/appcast.xml", {.body = UpdaterWorld::feedOf({item("1.2-beta", "beta"), item("1.1", "")})});
    folder_.write("trusted.pem", testCertificates().trusted().localCertificate().toPem().toStdString());
    folder_.writeProgram("bin/program", UpdaterWorld::contentOf(SONVEL_TEST_1_0).toStdString());
  }

  FeedItem item(const char* version, const char* channel) const {
    const QString path = QLatin1Char('/') + QString::fromLatin1(version);
    const QByteArray file = server_.answer(path).body;
    return {.version = QString::fromLatin1(version),
            .channel = QString::fromLatin1(channel),
            .address = server_.url(path).toString(),
            .length = file.size(),
            .signature = key_.sign(file)};
  }

  /// Starts the program on a channel, and returns its log once it has ended as `version`.
  std::vector<std::string> updateOn(const std::string& channel, const std::string& version) {
    folder_.write("information.json", R"({"SUFeedURL": ")" +
                                          server_.url("/appcast.xml").toString().toStdString() +
                                          R"(", "SUPublicEDKey": ")" + key_.publicKey() +
                                          R"(", "AppUpdateChannel": ")" + channel + R"("})");
    QProcess program;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    const QString home = QString::fromStdString(folder_.path());
    environment.insert(QStringLiteral("SONVEL_TEST_FOLDER"), home);
    environment.insert(QStringLiteral("XDG_CACHE_HOME"), home + QStringLiteral("/cache"));
    environment.insert(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"), QStringLiteral("unix:path=/nowhere"));
    environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
    environment.insert(QStringLiteral("QT_QUICK_BACKEND"), QStringLiteral("software"));
    program.setProcessEnvironment(environment);
    program.setProcessChannelMode(QProcess::ForwardedChannels);
    program.start(home + QStringLiteral("/bin/program"), QStringList());
    const std::string last = version + ": ends";
    EXPECT_TRUE(waitUntil([&] { return testing::Matches(Contains(last))(log()); }, std::chrono::seconds(70)))
        << testing::PrintToString(log());
    EXPECT_TRUE(program.state() == QProcess::NotRunning || program.waitForFinished());
    EXPECT_EQ(program.exitCode(), 0);
    return log();
  }

  std::vector<std::string> log() const {
    std::vector<std::string> lines;
    std::ifstream file(folder_.path("log"));
    for (std::string line; std::getline(file, line);)
      lines.push_back(line);
    return lines;
  }

  QStringList filesIn(const char* name) const {
    QStringList files;
    QDirIterator all(QString::fromStdString(folder_.path(name)), QDir::Files | QDir::Hidden,
                     QDirIterator::Subdirectories);
    while (all.hasNext())
      files.append(all.next().mid(static_cast<qsizetype>(folder_.path().size()) + 1));
    return files;
  }

  FeedServer server_{testCertificates().trusted()};
  SigningKey key_;
  desktop::TemporaryFolder folder_;
};

/// The lines without those that may come any number of times, or not at all.
std::vector<std::string> milestones(std::vector<std::string> lines) {
  std::erase_if(lines, [](const std::string& line) {
    return line.find("part of the download") != std::string::npos ||
           line.find("Looking") != std::string::npos || line.find("Downloading") != std::string::npos ||
           line.find("Verifying") != std::string::npos || line.find("Installing") != std::string::npos ||
           line.find("is installed") != std::string::npos;
  });
  return lines;
}

TEST_F(SelfUpdate, takesTheStableVersionAndStartsAsIt) {
  const std::vector<std::string> log = updateOn("stable", "1.1");
  EXPECT_THAT(milestones(log),
              ElementsAre("1.0: starts",
                          AllOf(HasSubstr("1.0: Sonvel 1.1 is available"), HasSubstr("\u2022 more")),
                          HasSubstr("1.0: Sonvel 1.1 is ready to install"), "1.0: ends", "1.1: starts",
                          HasSubstr("1.1: Sonvel is up to date"), "1.1: ends"));
  EXPECT_THAT(log, Contains("1.0: part of the download").Times(testing::Ge(3)));
  EXPECT_EQ(server_.requestCount("/1.2-beta"), 0);
  EXPECT_EQ(UpdaterWorld::contentOf(folder_.path("bin/program")), largeProgram(SONVEL_TEST_1_1));
  EXPECT_THAT(filesIn("bin"), ElementsAre("bin/program")) << "1.1 has started and needs 1.0 no longer";
  EXPECT_TRUE(filesIn("cache").filter("download-").isEmpty());
}

TEST_F(SelfUpdate, takesTheBetaOnTheBetaChannel) {
  const std::vector<std::string> log = updateOn("beta", "1.2-beta");
  EXPECT_THAT(log, Contains(HasSubstr("1.0: Sonvel 1.2-beta is available")));
  EXPECT_THAT(log, Contains(HasSubstr("1.2-beta: Sonvel is up to date")));
  EXPECT_EQ(server_.requestCount("/1.1"), 0);
  EXPECT_EQ(UpdaterWorld::contentOf(folder_.path("bin/program")), largeProgram(SONVEL_TEST_1_2_BETA));
}

TEST_F(SelfUpdate, staysWhatItIsWhenTheSignatureIsAnothers) {
  FeedItem forged = item("1.1", "");
  forged.signature = SigningKey().sign(server_.answer("/1.1").body);
  server_.set("/appcast.xml", {.body = UpdaterWorld::feedOf({forged})});
  const std::vector<std::string> log = updateOn("stable", "1.0");
  EXPECT_THAT(log, Contains(HasSubstr("isn't signed by the maker of this program")));
  EXPECT_THAT(log, Not(Contains(HasSubstr("1.1: starts"))));
  EXPECT_EQ(UpdaterWorld::contentOf(folder_.path("bin/program")), UpdaterWorld::contentOf(SONVEL_TEST_1_0));
  EXPECT_THAT(filesIn("bin"), ElementsAre("bin/program"));
  EXPECT_TRUE(filesIn("cache").filter("download-").isEmpty());
}

} // namespace
} // namespace sonvel::updater
