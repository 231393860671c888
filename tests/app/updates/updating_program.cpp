// A small program that updates itself as Sonvel does, with a user who takes what is offered. What it is and
// sees it appends to the file "log" in the folder that SONVEL_TEST_FOLDER names.
#include "app/app_updates.h"
#include "desktop/program_bundle.h"
#include "desktop/steady_clock.h"
#include "ui/updates/update_presenter.h"
#include "updater/memory_preferences.h"

#include <QFile>
#include <QGuiApplication>
#include <QQuickItem>
#include <QQuickView>
#include <QSslConfiguration>
#include <QTest>
#include <QTimer>

namespace sonvel {
namespace {

class Log {
 public:
  explicit Log(const QString& folder)
      : file_(folder + QStringLiteral("/log")) {
    if (!file_.open(QIODevice::Append)) std::abort();
  }

  void add(const QString& line) {
    file_.write((QStringLiteral(SONVEL_TEST_VERSION ": ") + line).toUtf8().replace('\n', ' ') + '\n');
    file_.flush();
  }

 private:
  QFile file_;
};

struct PlainAppearance final : DesktopAppearance {
  Appearance current() const override { return {}; }

  void onChange(std::function<void()>) override {}
};

/// Reads the window's words and presses Return on whatever can be taken.
class User : public QObject {
 public:
  explicit User(Log& log)
      : log_(log) {
    connect(&timer_, &QTimer::timeout, this, [this] { look(); });
    timer_.start(5);
  }

 private:
  void look() {
    for (QWindow* window : QGuiApplication::topLevelWindows()) {
      auto* view = qobject_cast<QQuickView*>(window);
      if (view == nullptr || !view->isVisible() || view->rootObject() == nullptr) continue;
      return read(*view, *view->rootObject()->property("presenter").value<UpdatePresenter*>());
    }
  }

  void read(QQuickView& view, UpdatePresenter& presenter) {
    watch(presenter);
    const QString seen = presenter.heading() + " | " + presenter.detail() + " | " + presenter.notes();
    if (seen == seen_) return;
    seen_ = seen;
    log_.add(seen);
    if (presenter.acceptLabel().isEmpty()) return;
    const bool isLast =
        presenter.dismissLabel().isEmpty() || presenter.acceptLabel() == QLatin1String("Try Again");
    QTest::keyClick(&view, isLast ? Qt::Key_Escape : Qt::Key_Return);
    if (isLast) QCoreApplication::quit();
  }

  void watch(UpdatePresenter& presenter) {
    if (watched_ == &presenter) return;
    watched_ = &presenter;
    connect(&presenter, &UpdatePresenter::changed, this, [this, &presenter] {
      if (presenter.fraction() > 0 && presenter.fraction() < 1)
        log_.add(QStringLiteral("part of the download"));
    });
  }

  Log& log_;
  QTimer timer_;
  QString seen_;
  const UpdatePresenter* watched_ = nullptr;
};

void trust(const QString& certificate) {
  QSslConfiguration configuration = QSslConfiguration::defaultConfiguration();
  configuration.addCaCertificates(certificate);
  QSslConfiguration::setDefaultConfiguration(configuration);
}

void run(QGuiApplication& application, const QString& folder, updater::Relaunch& relaunch) {
  Log log(folder);
  log.add(QStringLiteral("starts"));
  trust(folder + QStringLiteral("/trusted.pem"));
  desktop::SteadyClock clock;
  updater::MemoryPreferences preferences;
  const desktop::ProgramBundle bundle((folder + QStringLiteral("/information.json")).toStdString());
  const PlainAppearance appearance;
  AppUpdates updates({.bundle = bundle,
                      .clock = clock,
                      .preferences = preferences,
                      .appearance = appearance,
                      .relaunch = relaunch,
                      .requestQuit = [] { QCoreApplication::quit(); }});
  User user(log);
  updates.checkForUpdates();
  QTimer::singleShot(std::chrono::minutes(1), &application, [] { QCoreApplication::exit(1); });
  QGuiApplication::exec();
  log.add(QStringLiteral("ends"));
}

} // namespace
} // namespace sonvel

int main(int argc, char** argv) {
  sonvel::updater::Relaunch relaunch;
  {
    QGuiApplication application(argc, argv);
    QGuiApplication::setQuitOnLastWindowClosed(false);
    QGuiApplication::setApplicationVersion(QStringLiteral(SONVEL_TEST_VERSION));
    sonvel::run(application, qEnvironmentVariable("SONVEL_TEST_FOLDER"), relaunch);
  }
  relaunch.perform();
  return 0;
}
