#include "app/installed_page.h"
#include "app/sonvel_app.h"
#include "desktop/temporary_folder.h"
#include "updater/package_installer.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QCryptographicHash>
#include <QFile>
#include <QQuickItem>
#include <QQuickWindow>
#include <QTest>
#include <csignal>
#include <cstdlib>
#include <optional>
#include <sys/resource.h>

namespace sonvel {

namespace {

/// The whole program on a machine that has neither a session bus nor a sound server, nor a display.
class SonvelAppTest : public ::testing::Test {
 protected:
  SonvelAppTest() {
    qunsetenv("PIPEWIRE_RUNTIME_DIR");
    for (const char* name : {"XDG_RUNTIME_DIR", "XDG_CONFIG_HOME", "XDG_DATA_HOME"})
      qputenv(name, folder_.path("").c_str());
    qputenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent");
    qputenv("QT_QPA_PLATFORM", "offscreen");
    application_.emplace(argc_, nullptr);
    app_.emplace(relaunch_, deadline_);
  }

  const desktop::TemporaryFolder folder_;
  int argc_ = 0;
  std::optional<QApplication> application_;
  updater::Relaunch relaunch_;
  QuitDeadline deadline_;
  std::optional<SonvelApp> app_;
};

TEST_F(SonvelAppTest, EndsOnceHoweverOftenItIsAskedAndBeforeItRuns) {
  app_.emplace(relaunch_, deadline_, Machine::simulated);
  EXPECT_TRUE(app_->showPanel());
  QCoreApplication::quit();
  app_->terminate();
  EXPECT_FALSE(app_->showPanel());
  std::raise(SIGTERM);
  EXPECT_EQ(app_->run(), EXIT_SUCCESS);
  std::raise(SIGTERM);
  app_.reset();
}

rlimit openFiles() {
  rlimit limit{};
  getrlimit(RLIMIT_NOFILE, &limit);
  return limit;
}

TEST_F(SonvelAppTest, LetsProgramsThatItStartsHaveTheLimitOfOpenFilesOfBeforeAndNoSignalBlocked) {
  app_.reset();
  const rlimit limit{700, openFiles().rlim_max};
  setrlimit(RLIMIT_NOFILE, &limit);
  app_.emplace(relaunch_, deadline_);
  EXPECT_EQ(openFiles().rlim_cur, limit.rlim_max);

  const std::string tells =
      "#!/bin/sh\necho $(ulimit -Sn) $(grep SigBlk /proc/self/status) >>" + folder_.path("told") + "\n";
  const std::string opener = folder_.writeProgram("bin/xdg-open", tells);
  qputenv("PATH", (folder_.path("bin:") + qEnvironmentVariable("PATH").toStdString()).c_str());
  folder_.write("applications/opener.desktop",
                "[Desktop Entry]\nType=Application\nName=Opener\nExec=" + opener +
                    " %U\nMimeType=application/vnd.debian.binary-package;\n");
  folder_.write("mimeapps.list",
                "[Default Applications]\napplication/vnd.debian.binary-package=opener.desktop\n");
  EXPECT_TRUE(openInstalledPage(QString::fromStdString(opener)));
  const QByteArray content = "!<arch>\ndebian-binary   ";
  updater::UpdateFile package;
  package.append(content);
  updater::DesktopPackageInstaller installer;
  EXPECT_TRUE(installer.install(
      std::move(package).verify(QCryptographicHash::hash(content, QCryptographicHash::Sha256))));
  QFile told(QString::fromStdString(folder_.path("told")));
  EXPECT_TRUE(QTest::qWaitFor([&] { return told.size() >= 58; }, 20000));
  const std::string line = "700 SigBlk: 0000000000000000\n";
  ASSERT_TRUE(told.open(QIODevice::ReadOnly));
  EXPECT_EQ(told.readAll().toStdString(), line + line);

  app_.reset();
  EXPECT_EQ(openFiles().rlim_cur, 700); // what is started now is a new version of the program
}

} // namespace

} // namespace sonvel
