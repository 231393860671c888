#include "ui/shell/panel_window.h"

#include "ui/shell/launch_end.h"
#include "ui/shell/layer_surface.h"
#include "ui/shell/panel_placement.h"

#include <QBasicTimer>
#include <QCursor>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QLoggingCategory>
#include <QPalette>
#include <QQmlComponent>
#include <QQmlEngine>
#include <QQmlIncubationController>
#include <QQuickItem>
#include <QQuickWindow>
#include <QScreen>
#include <QTimerEvent>
#include <algorithm>
#include <cmath>
#include <malloc.h>
#include <utility>

namespace sonvel::ui {

namespace {

constexpr int kLowestPlainWindow = 120;
constexpr int kHighestBar = 64; ///< of usual desktops
constexpr int kStepMilliseconds = 1;

bool isOnWayland() {
  return QGuiApplication::platformName().startsWith(QLatin1String("wayland"));
}

QList<ScreenArea> screenAreas() {
  QList<ScreenArea> areas;
  for (const QScreen* screen : QGuiApplication::screens()) {
    QRect available = screen->availableGeometry();
    if (isOnWayland()) available.setHeight(available.height() - kHighestBar); // it tells of no bars
    areas.append({.geometry = screen->geometry(), .available = available});
  }
  return areas;
}

/// Whether the window is `owner` or a child of it, such as a dialog.
bool belongsTo(const QWindow* window, const QWindow* owner) {
  while (window != nullptr && window != owner)
    window = window->transientParent();
  return window == owner && owner != nullptr;
}

/// The order keeps the minimum below the maximum.
void setLimits(QWindow& window, const QSize& smallest, const QSize& largest) {
  window.setMinimumSize({});
  window.setMaximumSize(largest);
  window.setMinimumSize(smallest);
}

int upwards(double length) {
  return static_cast<int>(std::ceil(length));
}

} // namespace

/// Reports what the user does to the window itself.
class PanelWindow::Window final : public QQuickWindow {
 public:
  std::function<void()> onClose;
  std::function<void()> onEscape;
  std::function<void(bool)> onExposure;

 private:
  void exposeEvent(QExposeEvent* event) override {
    QQuickWindow::exposeEvent(event);
    if (onExposure) onExposure(isExposed());
  }

  void keyPressEvent(QKeyEvent* event) override {
    event->ignore(); // unless the content accepts it
    QQuickWindow::keyPressEvent(event);
    if (event->key() == Qt::Key_Escape && !event->isAccepted() && onEscape) onEscape();
  }

  void closeEvent(QCloseEvent* /*event*/) override {
    if (onClose) onClose();
  }
};

/// Creates what the content creates asynchronously in short turns of the event loop.
class PanelWindow::Steps final : public QObject, public QQmlIncubationController {
 private:
  void incubatingObjectCountChanged(int count) override {
    if (count > 0)
      timer_.start(0, this);
    else
      timer_.stop();
  }

  void timerEvent(QTimerEvent* /*event*/) override { incubateFor(kStepMilliseconds); }

  QBasicTimer timer_;
};

/// Everything that exists while the panel is open.
struct PanelWindow::Shown {
  Steps steps;
  QQmlEngine engine; // outlives the objects it creates
  Window window;
  std::unique_ptr<QWindow> surroundings; // null where they are not needed
  QQuickItem* root = nullptr;            // owned by the window
  Style style = Style::panel;
  bool wasActive = false;
  bool isPlaced = false; // and framed by the window manager, as far as it does and tells
  bool isSeen = true;    // until known, shortly after opening
  QRect icon;
  QPoint pointer;
};

PanelWindow::PanelWindow(PanelContent content, const Clock& clock)
    : content_(std::move(content))
    , clock_(clock) {
  QGuiApplication::setQuitOnLastWindowClosed(false);
  connect(qGuiApp, &QGuiApplication::focusWindowChanged, this, &PanelWindow::onFocusWindowChanged);
}

PanelWindow::~PanelWindow() = default;

QQuickWindow* PanelWindow::window() const noexcept {
  return shown_ ? &shown_->window : nullptr;
}

std::optional<PanelWindow::Style> PanelWindow::style() const noexcept {
  return shown_ ? std::optional(shown_->style) : std::nullopt;
}

bool PanelWindow::open(Style style, const QRect& icon) {
  if (shown_ && shown_->style != style) close();
  const bool isNew = !shown_;
  if (isNew) {
    leaving_.reset(); // first, so that the model gets both events in order
    shown_ = make(style);
    if (!shown_) return false;
    shown_->icon = icon;
    shown_->pointer = pointer();
    fit();
    if (style == Style::panel)
      shown_->surroundings =
          layInCorner(shown_->window, shown_->window.geometry().center(), [this] { closeByUser(); });
    follow(*shown_->root);
  }
  endLaunch(shown_->window);
  if (shown_->surroundings) shown_->surroundings->show();
  shown_->window.show();
  shown_->window.raise();
  shown_->window.requestActivate();
  if (isNew) Q_EMIT opened();
  return true;
}

void PanelWindow::toggle(const QRect& icon, const QPoint& click) {
  if (!click.isNull()) lastClick_ = click;
  const auto lostFocus = std::exchange(lostFocus_, std::nullopt);
  if (isOpen()) {
    closeByUser();
  } else if (!lostFocus || clock_.now() - *lostFocus > kClickDuration) {
    open(Style::panel, icon);
  }
}

void PanelWindow::close() {
  if (!shown_) return;
  shown_->root->disconnect(this);
  shown_->window.disconnect(this);
  shown_->window.onClose = nullptr;
  shown_->window.onEscape = nullptr;
  shown_->window.onExposure = nullptr;
  shown_->window.hide();
  if (shown_->surroundings) shown_->surroundings->hide();
  leaving_ = std::move(shown_); // one of its parts may be calling this
  QMetaObject::invokeMethod(this, &PanelWindow::destroyLeaving, Qt::QueuedConnection);
  Q_EMIT closed();
}

// Destroys the engine and returns freed memory to the system. Keeping an engine for the next opening would
// hold a megabyte more and save only milliseconds; malloc_trim returns another megabyte.
void PanelWindow::destroyLeaving() {
  leaving_.reset();
  malloc_trim(0);
}

void PanelWindow::closeByUser() {
  const bool isPlain = style() == Style::plainWindow;
  close();
  if (isPlain) Q_EMIT plainWindowClosedByUser();
}

std::unique_ptr<PanelWindow::Shown> PanelWindow::make(Style style) {
  auto shown = std::make_unique<Shown>();
  shown->style = style;
  shown->engine.setIncubationController(&shown->steps);
  if (content_.prepareEngine) content_.prepareEngine(shown->engine);
  QQmlComponent component(&shown->engine, content_.source);
  std::unique_ptr<QObject> object(
      component.isReady() ? component.createWithInitialProperties(content_.properties) : nullptr);
  auto* const root = qobject_cast<QQuickItem*>(object.get());
  if (root == nullptr) {
    qWarning("The panel has no content: %s", qPrintable(component.errorString()));
    return nullptr;
  }

  Window& window = shown->window;
  shown->root = root;
  root->setParent(&window);
  root->setParentItem(window.contentItem());
  static_cast<void>(object.release()); // now owned by the window

  connect(&window, &QWindow::widthChanged, root, [root](int width) { root->setWidth(width); });
  connect(&window, &QWindow::heightChanged, root, [root](int height) { root->setHeight(height); });
  connect(&window, &QWindow::yChanged, this, [this] {
    if (shown_->style == Style::plainWindow && !std::exchange(shown_->isPlaced, true)) fit();
  });
  window.setTitle(QStringLiteral("Sonvel"));
  window.setColor(QGuiApplication::palette().color(QPalette::Window));
  if (style == Style::panel) window.setFlags(Qt::Tool | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint);
  window.onClose = [this] { closeByUser(); };
  window.onEscape = [this] {
    if (shown_->style == Style::panel) closeByUser();
  };
  window.onExposure = [this](bool isSeen) {
    if (std::exchange(shown_->isSeen, isSeen) != isSeen) Q_EMIT seenChanged(isSeen);
  };
  if (content_.ready) content_.ready(*root);
  return shown;
}

void PanelWindow::follow(QQuickItem& root) {
  connect(&root, &QQuickItem::implicitHeightChanged, this, &PanelWindow::fit);
  connect(&root, &QQuickItem::implicitWidthChanged, this, &PanelWindow::fit);
}

// Wayland tells no program where the pointer is outside of its windows. Until the icon is clicked, it is
// taken to be where the tray usually is.
QPoint PanelWindow::pointer() const {
  if (!isOnWayland()) return QCursor::pos();
  if (!lastClick_.isNull()) return lastClick_;
  const QRect screen = QGuiApplication::primaryScreen()->geometry();
  return qgetenv("XDG_CURRENT_DESKTOP").contains("KDE") ? screen.bottomRight() : screen.topRight();
}

// As large as the content, limited by the screen. A panel grows away from the bar, a plain window stays on
// the screen with its frame.
void PanelWindow::fit() {
  QQuickItem& root = *shown_->root;
  Window& window = shown_->window;
  const QSize wanted(upwards(root.implicitWidth()), upwards(root.implicitHeight()));
  if (shown_->style == Style::panel) {
    const QRect place = panelGeometry(screenAreas(), shown_->icon, shown_->pointer, wanted);
    // a fixed size, because tiling compositors would tile it otherwise
    setLimits(window, place.size(), place.size());
    window.setGeometry(place);
  } else {
    // Asked before there is a frame, Qt would keep that answer until it has heard of the frame.
    const QMargins frame = shown_->isPlaced ? window.frameMargins() : QMargins();
    const QRect inside = window.screen()->availableGeometry().marginsRemoved(frame);
    const QSize size = wanted.boundedTo(inside.size());
    setLimits(window, {size.width(), kLowestPlainWindow}, size);
    if (!shown_->isPlaced) {
      window.resize(size);
    } else if (size != window.size()) {
      window.setGeometry(within(inside, {window.position(), size}));
    }
  }
  root.setSize(window.size());
}

void PanelWindow::onFocusWindowChanged(const QObject* focused) {
  if (style() != Style::panel) return;
  const bool isActive = belongsTo(qobject_cast<const QWindow*>(focused), &shown_->window);
  // Only after it had the focus: some window managers never give it.
  if (std::exchange(shown_->wasActive, shown_->wasActive || isActive) && !isActive) {
    lostFocus_ = clock_.now();
    closeByUser();
  }
}

} // namespace sonvel::ui
