#pragma once

#include <QAnimationDriver>
#include <QBasicTimer>

namespace sonvel::ui {

/// Moves everything that is animated in the process 20 times a second, as long as something is, instead of as
/// often as a screen can show: meters move as well for the eye, and take half of the processor's time.
///
/// Main thread; from its making, which needs a QCoreApplication, to its end.
class FramePace final : public QAnimationDriver {
 public:
  FramePace();
  ~FramePace() override;
  FramePace(const FramePace&) = delete;
  FramePace& operator=(const FramePace&) = delete;

 private:
  void start() override;
  void stop() override;
  void timerEvent(QTimerEvent* event) override;

  QBasicTimer timer_;
};

} // namespace sonvel::ui
