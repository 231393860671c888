// rows_bench [APPLICATIONS]...: the cost of the panel for the main thread, by the number of applications on a
// simulated machine: the time from opening it to its first frame, and the most processor time that a single
// event takes, while the rows are created and while they meter. Renders offscreen in software, as the program
// does.
#include "desktop/steady_clock.h"
#include "engine/hardware_controller.h"
#include "model/mixer_view_model.h"
#include "model/qt_executor.h"
#include "model/scripted_desktop.h"
#include "simulated/application_icons.h"
#include "simulated/desktop.h"
#include "simulated/preferences.h"
#include "simulated/simulated_hardware.h"
#include "ui/icons/app_icon_provider.h"
#include "ui/presentation/panel_theme.h"
#include "ui/presentation/views.h"
#include "ui/shell/frame_pace.h"
#include "ui/shell/panel_window.h"
#include "ui/symbols/symbol_image_provider.h"

#include <span>

#include <QApplication>
#include <QEventLoop>
#include <QQmlEngine>
#include <QQuickWindow>
#include <QTimer>
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <thread>
#include <vector>

namespace {

using namespace sonvel;
using namespace std::chrono_literals;

using Milliseconds = std::chrono::duration<double, std::milli>;
using Now = std::chrono::steady_clock;

constexpr int kOpenings = 5;
constexpr auto kMetered = 4s;    // measuring time for the open and the closed panel
constexpr auto kPatience = 5min; // time limit for creating the rows

/// Of this thread. Other programs do not count, and this thread never waits for another one.
Milliseconds processorTime() {
  timespec time{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
  return std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
}

/// Records the most processor time that an event takes.
class TimedApplication final : public QApplication {
 public:
  using QApplication::QApplication;

  bool notify(QObject* receiver, QEvent* event) override {
    if (isInEvent_) return QApplication::notify(receiver, event);
    isInEvent_ = true;
    const auto start = processorTime();
    const bool isTaken = QApplication::notify(receiver, event);
    longest_ = std::max(longest_, processorTime() - start);
    isInEvent_ = false;
    return isTaken;
  }

  double takeLongest() { return std::exchange(longest_, {}).count(); }

 private:
  bool isInEvent_ = false;
  Milliseconds longest_{};
};

class LightAppearance final : public DesktopAppearance {
 public:
  Appearance current() const override { return {.colorScheme = Appearance::ColorScheme::light}; }

  void onChange(std::function<void()>) override {}
};

/// The model on a machine where this many applications play.
struct Machine {
  explicit Machine(int count) {
    audio.addDevice({.uid = "speakers", .name = "Speakers", .volumes = {{kElementMain, {0.5F}}}});
    for (int i = 0; i < count; ++i) {
      const std::int32_t pid = 500 + i;
      const auto name = "Application " + std::to_string(i);
      applications.addApplication(
          {.processID = pid, .bundleIdentifier = "org." + name, .localizedName = name});
      audio.addProcess({.pid = pid, .bundleID = "org." + name, .streams = {[](std::uint64_t frame) {
                                                                 const float sample =
                                                                     frame / 12'000 % 2 == 0 ? 0.5F : 0.05F;
                                                                 return simulated::Frame{sample, sample};
                                                               }}});
    }
  }

  /// The engine's thread may still answer the model.
  ~Machine() {
    model.reset();
    const std::weak_ptr last = std::exchange(actor, nullptr);
    while (!last.expired())
      QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
  }

  Machine(const Machine&) = delete;
  Machine& operator=(const Machine&) = delete;

  simulated::SimulatedHardware audio;
  simulated::SimulatedProcesses processes;
  simulated::SimulatedBundle bundle{"com.quellmarsh.sonvel"};
  simulated::SimulatedApplications applications;
  desktop::SteadyClock clock;
  ScriptedConsent consent;
  AudioPermission permission{consent};
  simulated::SimulatedPreferences preferences;
  CountedUpdates updates;
  QtExecutor mainThread;
  std::shared_ptr<Actor<HardwareController>> actor = std::make_shared<Actor<HardwareController>>(
      AudioEnvironment{audio, processes, bundle, applications}, std::ref(clock));
  std::shared_ptr<MixerViewModel> model = std::make_shared<MixerViewModel>(
      MixerDependencies{actor, mainThread, clock, permission, preferences, updates});
};

class RowsBench {
 public:
  RowsBench(TimedApplication& application, int applications)
      : application_(application)
      , machine_(applications)
      , count_(applications) {
    player_ = std::jthread([this](const std::stop_token& end) {
      while (!end.stop_requested()) {
        machine_.audio.runCycle(480);
        std::this_thread::sleep_for(100ms);
      }
    });
  }

  void run() {
    const double first = open();
    application_.takeLongest();
    const auto deadline = Now::now() + kPatience;
    const auto haveAllCome = [this] {
      const auto& rows = machine_.model->channels()->rows();
      return std::ssize(rows) == count_ && std::ranges::all_of(rows, &ChannelState::active);
    };
    while (!haveAllCome() && Now::now() < deadline)
      QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    if (!haveAllCome()) qFatal("Not every row came");
    const double coming = application_.takeLongest();
    const double metering = watch();
    window_.close();
    QCoreApplication::processEvents();
    const double closing = application_.takeLongest();
    const double closed = watch();
    std::vector<double> openings;
    for (int i = 0; i < kOpenings; ++i) {
      openings.push_back(this->open());
      window_.close();
      QCoreApplication::processEvents();
    }
    std::ranges::sort(openings);
    std::printf("%6d  %8.1f  %8.1f  %8.1f  %8.1f  %8.1f  %8.1f\n", count_, first, openings[kOpenings / 2],
                coming, metering, closing, closed);
    std::fflush(stdout);
  }

 private:
  /// Milliseconds to the first frame.
  double open() {
    const auto start = Now::now();
    window_.open(ui::PanelWindow::Style::panel);
    bool isShown = false;
    QObject::connect(window_.window(), &QQuickWindow::frameSwapped, [&] { isShown = true; });
    while (!isShown)
      QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    const double milliseconds = Milliseconds(Now::now() - start).count();
    window_.window()->disconnect();
    return milliseconds;
  }

  double watch() {
    QEventLoop loop;
    QTimer::singleShot(kMetered, &loop, &QEventLoop::quit);
    loop.exec();
    return application_.takeLongest();
  }

  TimedApplication& application_;
  Machine machine_;
  const int count_;
  LightAppearance appearance_;
  PanelTheme theme_{appearance_};
  simulated::SimulatedApplicationIcons icons_;
  AppIconCache iconCache_{machine_.applications, icons_};
  ui::PanelWindow window_{
      {.source = rootPanelURL(),
       .properties = {{"model", QVariant::fromValue(machine_.model.get())}, {"serverNotice", QString()}},
       .prepareEngine =
           [this](QQmlEngine& engine) {
             theme_.install(engine);
             engine.addImageProvider(SymbolImageProvider::kID,
                                     std::make_unique<SymbolImageProvider>().release());
             engine.addImageProvider(AppIconProvider::kID,
                                     std::make_unique<AppIconProvider>(iconCache_).release());
           }},
      machine_.clock};
  std::jthread player_; ///< runs the audio cycles
};

} // namespace

int main(int argumentCount, char** arguments) {
  qputenv("QT_QPA_PLATFORM", "offscreen");
  QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);
  TimedApplication application(argumentCount, arguments);
  const ui::FramePace framePace;
  registerViews();
  std::puts(
      "Milliseconds. To the first frame: of the first opening, when no row is there yet, and with all rows.\n"
      "Processor time of the longest event: while the rows come, while they meter, as the panel closes, "
      "with\n"
      "the panel closed\n"
      "  rows   opening  with rows   coming    meters   closing    closed");
  std::vector<int> counts;
  for (const char* argument : std::span(arguments, static_cast<std::size_t>(argumentCount)).subspan(1))
    counts.push_back(std::atoi(argument));
  if (counts.empty()) counts = {10, 100, 1000};
  for (const int rows : counts)
    RowsBench(application, rows).run();
}
