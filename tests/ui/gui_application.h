#pragma once

#include <QGuiApplication>

namespace sonvel {

/// The one application of a test program, without a display.
inline QGuiApplication& guiApplication() {
  static char name[] = "test";
  static char* arguments[] = {name, nullptr};
  static int count = 1;
  qputenv("QT_QPA_PLATFORM", "offscreen");
  static QGuiApplication application(count, arguments);
  return application;
}

} // namespace sonvel
