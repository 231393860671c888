#pragma once

#include <QAnimationDriver>
#include <QBasicTimer>

namespace sonvel::ui {

/// Limits all animations of the process to 17 frames per second instead of the screen's rate: two for each
/// reading of the meters. Frames are most of the panel's processor time.
///
/// Main thread; needs a QCoreApplication. Active during its lifetime.
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
