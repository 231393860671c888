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
    app_.emplace(relaunch_);
  }

  const desktop::TemporaryFolder folder_;
  int argc_ = 0;
  std::optional<QApplication> application_;
  updater::Relaunch relaunch_;
  std::optional<SonvelApp> app_;
};

TEST_F(SonvelAppTest, EndsOnceHoweverOftenItIsAskedAndBeforeItRuns) {
  EXPECT_TRUE(app_->showPanel());
  app_->terminate();
  EXPECT_FALSE(app_->showPanel());
  app_->terminate();
  std::raise(SIGTERM);
  EXPECT_EQ(app_->run(), EXIT_SUCCESS);
}

TEST_F(SonvelAppTest, RunsOnASimulatedMachineAndBearsARequestToEndWhileItIsDestroyed) {
  app_.emplace(relaunch_, Machine::simulated);
  ASSERT_TRUE(app_->showPanel()); // its work keeps the model, which the end waits for
  const auto rows = [] {
    const auto windows = QGuiApplication::topLevelWindows();
    const auto* const window = windows.isEmpty() ? nullptr : qobject_cast<QQuickWindow*>(windows.front());
    const auto* const root = window != nullptr ? window->contentItem()->childItems().value(0) : nullptr;
    const auto* const model = root != nullptr ? root->property("model").value<MixerViewModel*>() : nullptr;
    return model != nullptr ? model->channels()->rows().size() : 0;
  };
  EXPECT_TRUE(QTest::qWaitFor([&] { return rows() >= 3; }, 20000)) << rows() << " rows";
  std::raise(SIGTERM);
  app_.reset();
}

rlim_t openFilesOfThisProcess() {
  rlimit limit{};
  getrlimit(RLIMIT_NOFILE, &limit);
  return limit.rlim_cur;
}

TEST_F(SonvelAppTest, LetsProgramsThatItStartsHaveTheLimitOfOpenFilesOfBefore) {
  app_.reset();
  rlimit limit{};
  getrlimit(RLIMIT_NOFILE, &limit);
  limit.rlim_cur = 700;
  setrlimit(RLIMIT_NOFILE, &limit);
  app_.emplace(relaunch_);
  EXPECT_EQ(openFilesOfThisProcess(), limit.rlim_max);

  const std::string tells = "#!/bin/sh\nulimit -Sn >>" + folder_.path("limits") + "\n";
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
  QFile limits(QString::fromStdString(folder_.path("limits")));
  EXPECT_TRUE(QTest::qWaitFor([&] { return limits.size() >= 8; }, 20000));
  ASSERT_TRUE(limits.open(QIODevice::ReadOnly));
  EXPECT_EQ(limits.readAll().toStdString(), "700\n700\n");

  app_.reset();
  EXPECT_EQ(openFilesOfThisProcess(), 700); // what is started now is a new version of the program
}

} // namespace

} // namespace sonvel
