#include "ui/shell/frame_pace.h"

#include <QTimerEvent>

namespace sonvel::ui {

namespace {

/// Half of the time between two readings of the meters.
constexpr int kFrameMilliseconds = 60;

} // namespace

FramePace::FramePace() {
  install();
}

FramePace::~FramePace() {
  uninstall();
}

void FramePace::start() {
  QAnimationDriver::start();
  timer_.start(kFrameMilliseconds, Qt::PreciseTimer, this);
}

void FramePace::stop() {
  timer_.stop();
  QAnimationDriver::stop();
}

void FramePace::timerEvent(QTimerEvent* event) {
  if (event->timerId() == timer_.timerId()) advanceAnimation();
}

} // namespace sonvel::ui
