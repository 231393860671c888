#include "app/installed_page.h"
#include "app/sonvel_app.h"
#include "desktop/temporary_folder.h"
#include "updater/package_installer.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QCryptographicHash>
#include <QFile>
#include <QTest>
#include <csignal>
#include <cstdlib>
#include <optional>
#include <sys/resource.h>

namespace sonvel {

namespace {

rlimit openFiles() {
  rlimit limit{};
  getrlimit(RLIMIT_NOFILE, &limit);
  return limit;
}

/// The whole program without session bus, sound server and display.
TEST(SonvelAppTest, LetsProgramsThatItStartsHaveTheLimitOfOpenFilesOfBeforeAndNoSignalBlocked) {
  const desktop::TemporaryFolder folder;
  qunsetenv("PIPEWIRE_RUNTIME_DIR");
  for (const char* name : {"XDG_RUNTIME_DIR", "XDG_CONFIG_HOME", "XDG_DATA_HOME"})
    qputenv(name, folder.path("").c_str());
  qputenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent");
  qputenv("QT_QPA_PLATFORM", "offscreen");
  int argc = 0;
  const QApplication application(argc, nullptr);
  const rlimit limit{700, openFiles().rlim_max};
  setrlimit(RLIMIT_NOFILE, &limit);
  updater::Relaunch relaunch;
  QuitDeadline deadline;
  std::optional<SonvelApp> app(std::in_place, relaunch, deadline);
  EXPECT_EQ(openFiles().rlim_cur, limit.rlim_max);

  const std::string tells = "#!/bin/sh\necho $(ulimit -Sn) $(grep SigBlk /proc/self/status) >>" +
                            folder.path("told") + "\n[ -x \"$1\" ]\n";
  const std::string opener = folder.writeProgram("bin/xdg-open", tells);
  qputenv("PATH", (folder.path("bin:") + qEnvironmentVariable("PATH").toStdString()).c_str());
  folder.write("applications/opener.desktop",
               "[Desktop Entry]\nType=Application\nName=Opener\nExec=" + opener +
                   " %U\nMimeType=application/vnd.debian.binary-package;\n");
  folder.write("mimeapps.list",
               "[Default Applications]\napplication/vnd.debian.binary-package=opener.desktop\n");
  int failures = 0;
  openInstalledPage(QString::fromStdString(folder.path("mimeapps.list")), [&] { ++failures; });
  EXPECT_TRUE(QTest::qWaitFor([&] { return failures == 1; }, 20000)) << "the opener has said so";
  openInstalledPage(QString::fromStdString(opener), [&] { ++failures; });
  const QByteArray content = "!<arch>\ndebian-binary   ";
  updater::UpdateFile package;
  package.append(content);
  updater::DesktopPackageInstaller installer;
  EXPECT_TRUE(installer.install(
      std::move(package).verify(QCryptographicHash::hash(content, QCryptographicHash::Sha256))));
  QFile told(QString::fromStdString(folder.path("told")));
  EXPECT_TRUE(QTest::qWaitFor([&] { return told.size() >= 87; }, 20000));
  const std::string line = "700 SigBlk: 0000000000000000\n";
  ASSERT_TRUE(told.open(QIODevice::ReadOnly));
  EXPECT_EQ(told.readAll().toStdString(), line + line + line);

  EXPECT_TRUE(app->showPanel());
  app->terminate();
  EXPECT_FALSE(app->showPanel());
  EXPECT_EQ(app->run(), EXIT_SUCCESS) << "it was asked before it ran";
  EXPECT_EQ(failures, 1);
  std::raise(SIGTERM);
  app.reset();
  EXPECT_EQ(openFiles().rlim_cur, 700); // this is what a new version would be started with
}

} // namespace

} // namespace sonvel
