#include "ui/shell/panel_presence.h"

#include "ui/shell/panel_window.h"

#include <utility>

namespace sonvel::ui {

PanelPresence::PanelPresence(PanelWindow& window, std::function<QRect()> iconGeometry,
                             std::function<void()> closedWithoutIcon, std::chrono::milliseconds trayPatience)
    : window_(window)
    , iconGeometry_(std::move(iconGeometry))
    , closedWithoutIcon_(std::move(closedWithoutIcon)) {
  missing_.setSingleShot(true);
  missing_.setInterval(trayPatience);
  connect(&missing_, &QTimer::timeout, this, &PanelPresence::standIn);
  connect(&window_, &PanelWindow::plainWindowClosedByUser, this, [this] {
    if (isWithoutIcon()) closedWithoutIcon_();
  });
}

void PanelPresence::setTrayShown(bool isShown) {
  const bool wasShown = isTrayShown_.value_or(false);
  isTrayShown_ = isShown;
  if (isShown) missing_.stop();
  if (std::exchange(isAwaited_, false)) {
    show();
  } else if (wasShown && !isShown && !hasEnded_) {
    missing_.start();
  }
}

void PanelPresence::clickIcon(const QPoint& place) {
  if (!hasEnded_) window_.toggle(iconGeometry_(), place);
}

void PanelPresence::show() {
  if (hasEnded_) return;
  if (!isTrayShown_) {
    isAwaited_ = true;
  } else if (!*isTrayShown_) {
    standIn();
  } else {
    window_.open(window_.style().value_or(PanelWindow::Style::panel), iconGeometry_());
  }
}

void PanelPresence::end() {
  hasEnded_ = true;
  missing_.stop();
  window_.close();
}

// A panel without an icon could not be found again after closing.
void PanelPresence::standIn() {
  missing_.stop();
  window_.open(PanelWindow::Style::plainWindow);
}

} // namespace sonvel::ui
