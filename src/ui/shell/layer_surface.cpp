#include "ui/shell/layer_surface.h"

#ifdef SONVEL_HAS_LAYER_SHELL

#include <LayerShellQt/Window>
#include <QGuiApplication>
#include <QPainter>
#include <QRasterWindow>
#include <QScreen>
#include <cstring>
#include <utility>
#include <wayland-client.h>

namespace sonvel::ui {
namespace {

using Layer = LayerShellQt::Window;

struct Disconnect {
  void operator()(wl_display* display) const { wl_display_disconnect(display); }

  void operator()(wl_registry* registry) const { wl_registry_destroy(registry); }
};

void noteGlobal(void* isKnown, wl_registry* /*registry*/, std::uint32_t /*name*/, const char* interface,
                std::uint32_t /*version*/) {
  if (std::strcmp(interface, "zwlr_layer_shell_v1") == 0) *static_cast<bool*>(isKnown) = true;
}

/// Asks over a connection of its own, because Qt has no public way to ask.
bool doesCompositorKnowLayers() {
  const std::unique_ptr<wl_display, Disconnect> display(wl_display_connect(nullptr));
  if (!display) return false;
  const std::unique_ptr<wl_registry, Disconnect> registry(wl_display_get_registry(display.get()));
  const wl_registry_listener listener{.global = noteGlobal,
                                      .global_remove = [](void*, wl_registry*, std::uint32_t) {}};
  bool isKnown = false;
  wl_registry_add_listener(registry.get(), &listener, &isKnown);
  wl_display_roundtrip(display.get());
  return isKnown;
}

Layer::Anchors nearestCorner(const QRect& area, const QPoint& place) {
  return Layer::Anchors(place.y() < area.center().y() ? Layer::AnchorTop : Layer::AnchorBottom) |
         (place.x() < area.center().x() ? Layer::AnchorLeft : Layer::AnchorRight);
}

void makeLayer(QWindow& window, Layer::Anchors anchors, Layer::KeyboardInteractivity keyboard) {
  Layer& layer = *Layer::get(&window);
  layer.setScope(QGuiApplication::desktopFileName());
  layer.setLayer(Layer::LayerTop);
  layer.setAnchors(anchors);
  layer.setKeyboardInteractivity(keyboard);
}

/// Invisible, and receives clicks.
class Surroundings final : public QRasterWindow {
 public:
  Surroundings(QScreen* screen, std::function<void()> clicked)
      : clicked_(std::move(clicked)) {
    setScreen(screen);
    QSurfaceFormat format;
    format.setAlphaBufferSize(8);
    setFormat(format);
    makeLayer(*this, {Layer::AnchorTop, Layer::AnchorBottom, Layer::AnchorLeft, Layer::AnchorRight},
              Layer::KeyboardInteractivityNone);
  }

 private:
  void paintEvent(QPaintEvent* /*event*/) override {
    QPainter painter(this);
    painter.setCompositionMode(QPainter::CompositionMode_Source);
    painter.fillRect(QRect({}, size()), Qt::transparent);
  }

  void mousePressEvent(QMouseEvent* /*event*/) override { clicked_(); }

  std::function<void()> clicked_;
};

} // namespace

std::unique_ptr<QWindow> layInCorner(QWindow& window, const QPoint& place,
                                     const std::function<void()>& clickedBeside) {
  if (!QGuiApplication::platformName().startsWith(QLatin1String("wayland"))) return nullptr;
  static const bool isPossible = doesCompositorKnowLayers();
  if (!isPossible) return nullptr;
  if (QScreen* const screen = QGuiApplication::screenAt(place)) window.setScreen(screen);
  makeLayer(window, nearestCorner(window.screen()->geometry(), place), Layer::KeyboardInteractivityOnDemand);
  return std::make_unique<Surroundings>(window.screen(), clickedBeside);
}

} // namespace sonvel::ui

#else

#include <QWindow>

namespace sonvel::ui {

std::unique_ptr<QWindow> layInCorner(QWindow& /*window*/, const QPoint& /*place*/,
                                     const std::function<void()>& /*clickedBeside*/) {
  return nullptr;
}

} // namespace sonvel::ui

#endif
