// Draws the panel in its states: panel_pictures FOLDER
//
// Twice as large with QT_SCALE_FACTOR=2, from right to left with -reverse behind the folder, in another font
// with PANEL_FONT and PANEL_FONT_POINTS.

#include "model/mixer_view_model.h"
#include "model/qt_executor.h"
#include "model/scripted_desktop.h"
#include "platform/simulated/desktop.h"
#include "platform/simulated/manual_clock.h"
#include "platform/simulated/simulated_audio.h"
#include "ui/panel_theme.h"
#include "ui/symbols/symbol_image_provider.h"
#include "ui/views.h"

#include <QDir>
#include <QFont>
#include <QGuiApplication>
#include <QPainter>
#include <QQmlEngine>
#include <QQuickImageProvider>
#include <QQuickItem>
#include <QQuickView>
#include <QTest>
#include <QTimer>

namespace {

using namespace sonvel;

struct FixedAppearance final : DesktopAppearance {
  Appearance current() const override { return appearance; }

  void onChange(std::function<void()>) override {}

  Appearance appearance;
};

/// Stands for every application.
class PlainIcons final : public QQuickImageProvider {
 public:
  PlainIcons()
      : QQuickImageProvider(QQuickImageProvider::Image) {}

  QImage requestImage(const QString& id, QSize* size, const QSize& requestedSize) override {
    QImage image(requestedSize, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(id.endsWith("/0") ? QColor(0x5b8def) : QColor(0x7f8aa0));
    painter.drawRoundedRect(QRectF(QPointF(), requestedSize), requestedSize.width() / 4.0,
                            requestedSize.width() / 4.0);
    *size = requestedSize;
    return image;
  }
};

void wait(int milliseconds) {
  QEventLoop loop;
  QTimer::singleShot(milliseconds, &loop, &QEventLoop::quit);
  loop.exec();
}

/// The machine whose panel is drawn.
class Machine {
 public:
  explicit Machine(int consent) {
    consent_.setPreflight(consent);
    audio_.addDevice({.uid = "speakers", .name = "Speakers", .volumes = {{kElementMain, {0.5F}}}});
    audio_.addDevice({.uid = "headset", .name = "Headset with a long name that goes on"});
    actor_ = std::make_shared<Actor<HardwareController>>(
        AudioEnvironment{audio_, processes_, bundle_, applications_}, std::ref(clock_));
    model_ = std::make_shared<MixerViewModel>(
        MixerDependencies{actor_, executor_, clock_, permission_, preferences_, updates_});
  }

  void play(const std::string& name, float sample) {
    const auto pid = nextPid_++;
    const auto id = "org.example." + name;
    applications_.addApplication({.processID = pid, .bundleIdentifier = id, .localizedName = name});
    ids_.push_back(audio_.addProcess(
        {.pid = pid, .bundleID = id, .streams = {simulated::constantSignal(sample, sample)}}));
  }

  void addRows() {
    play("Firefox", 0.5F);
    play("Music", 0.08F);
    play("An application with a name that is much too long for its row", 0.02F);
    play("Podcasts", 0.0F);
  }

  void setRows() {
    auto rows = model_->channels()->rows();
    if (rows.size() < 4) return;
    model_->setGain(150, rows[1].get());
    model_->setOutput(std::optional<std::string>("headset"), rows[1].get());
    model_->toggleMute(rows[2].get());
    rows[0]->setLastError("AudioHardwareCreateProcessTap failed (OSStatus 560947818)");
    audio_.removeProcess(ids_[3]);
  }

  void pass() {
    for (int i = 0; i < 30; ++i) {
      audio_.runCycle(64);
      clock_.advance(std::chrono::milliseconds(120));
      actor_->call([](HardwareController&) {}).get();
      wait(5);
    }
  }

  MixerViewModel* model() { return model_.get(); }

 private:
  simulated::SimulatedAudio audio_;
  simulated::SimulatedProcesses processes_;
  simulated::SimulatedBundle bundle_{"com.quellmarsh.sonvel"};
  simulated::SimulatedApplications applications_;
  simulated::ManualClock clock_;
  ScriptedConsent consent_;
  AudioPermission permission_{consent_};
  MemoryPreferences preferences_;
  CountedUpdates updates_;
  QtExecutor executor_;
  std::shared_ptr<Actor<HardwareController>> actor_;
  std::shared_ptr<MixerViewModel> model_;
  std::vector<AudioObjectID> ids_;
  std::int32_t nextPid_ = 500;
};

enum class State { rows, focus, menu, empty, denied, waiting };

constexpr std::array kStates{std::pair{State::rows, "rows"},     std::pair{State::focus, "focus"},
                             std::pair{State::menu, "menu"},     std::pair{State::empty, "empty"},
                             std::pair{State::denied, "denied"}, std::pair{State::waiting, "waiting"}};

int consentFor(State state) {
  return state == State::denied ? 1 : state == State::waiting ? 2 : 0;
}

/// Brings the keyboard to the slider of the first row.
void focusSlider(QQuickView& view) {
  for (int i = 0; i < 4; ++i)
    QTest::keyClick(&view, Qt::Key_Tab);
}

/// Opens the menu of the first row by the keyboard.
void openMenu(QQuickView& view) {
  focusSlider(view);
  QTest::keyClick(&view, Qt::Key_Space);
  QTest::keyClick(&view, Qt::Key_Down);
}

void draw(const QString& path, bool isDark, State state) {
  FixedAppearance appearance;
  appearance.appearance.colorScheme = isDark ? Appearance::ColorScheme::dark : Appearance::ColorScheme::light;
  Machine machine(consentFor(state));
  if (state == State::rows || state == State::focus || state == State::menu) machine.addRows();
  PanelTheme theme(appearance);
  QQmlEngine engine;
  theme.install(engine);
  engine.addImageProvider(SymbolImageProvider::kID, std::make_unique<SymbolImageProvider>().release());
  engine.addImageProvider("app-icon", std::make_unique<PlainIcons>().release());
  QQuickView view(&engine, nullptr);
  view.setInitialProperties({{"model", QVariant::fromValue(machine.model())}, {"serverNotice", QString()}});
  view.setSource(rootPanelURL());
  view.setResizeMode(QQuickView::SizeRootObjectToView);
  view.show();
  view.requestActivate();
  machine.pass();
  machine.setRows();
  machine.pass();
  view.resize(360, static_cast<int>(view.rootObject()->implicitHeight()));
  if (state == State::focus) focusSlider(view);
  if (state == State::menu) openMenu(view);
  if (state == State::waiting) machine.model()->requestPermission();
  wait(600);
  if (!view.grabWindow().save(path)) qWarning("cannot write %s", qPrintable(path));
}

} // namespace

int main(int argc, char** argv) {
  qputenv("QT_QPA_PLATFORM", "offscreen");
  qputenv("QT_QUICK_BACKEND", "software");
  QGuiApplication application(argc, argv);
  QGuiApplication::setFont(QFont(qEnvironmentVariable("PANEL_FONT", "DejaVu Sans"),
                                 qEnvironmentVariableIntValue("PANEL_FONT_POINTS") > 0
                                     ? qEnvironmentVariableIntValue("PANEL_FONT_POINTS")
                                     : 10));
  const QDir folder(argc > 1 ? argv[1] : ".");
  registerViews();
  for (const bool isDark : {false, true})
    for (const auto& [state, name] : kStates)
      draw(folder.filePath(QString(name) + (isDark ? "-dark.png" : "-light.png")), isDark, state);
}
