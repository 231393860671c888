#include "ui/shell/frame_pace.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QEventLoop>
#include <QTimer>
#include <QVariantAnimation>

namespace sonvel::ui {
namespace {

TEST(FramePaceTest, MovesToTheEndInFewSteps) {
  int argumentCount = 0;
  const QCoreApplication application(argumentCount, nullptr);
  const FramePace pace;
  QVariantAnimation animation;
  animation.setStartValue(0.0);
  animation.setEndValue(1.0);
  animation.setDuration(500);
  int steps = 0;
  QObject::connect(&animation, &QVariantAnimation::valueChanged, [&] { ++steps; });
  QEventLoop untilItEnds;
  QObject::connect(&animation, &QVariantAnimation::finished, &untilItEnds, &QEventLoop::quit);
  QTimer::singleShot(10000, &untilItEnds, &QEventLoop::quit);
  animation.start();
  untilItEnds.exec();
  ASSERT_EQ(animation.state(), QAbstractAnimation::Stopped);
  EXPECT_EQ(animation.currentValue(), 1.0);
  EXPECT_GT(steps, 1);
  EXPECT_LE(steps, 12) << "a step each 50 ms, and the first";
  const QDeadlineTimer deadline(10000);
  while (pace.isRunning() && !deadline.hasExpired())
    QCoreApplication::processEvents();
  EXPECT_FALSE(pace.isRunning()) << "it wakes a program in which nothing moves";
}

} // namespace
} // namespace sonvel::ui
