#include "app/sonvel_app.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QQuickItem>
#include <QQuickWindow>
#include <QTemporaryDir>
#include <QTest>
#include <csignal>
#include <cstdlib>
#include <optional>

namespace sonvel {

namespace {

/// The whole program on a machine that has neither a session bus nor a sound server, nor a display.
class SonvelAppTest : public ::testing::Test {
 protected:
  SonvelAppTest() {
    qunsetenv("PIPEWIRE_RUNTIME_DIR");
    qputenv("XDG_RUNTIME_DIR", folder_.path().toUtf8());
    qputenv("XDG_CONFIG_HOME", folder_.path().toUtf8());
    qputenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent");
    qputenv("QT_QPA_PLATFORM", "offscreen");
    application_.emplace(argc_, nullptr);
    app_.emplace(relaunch_);
  }

  QTemporaryDir folder_;
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

} // namespace

} // namespace sonvel
