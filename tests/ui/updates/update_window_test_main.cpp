#include <gtest/gtest.h>

#include <QGuiApplication>

/// The application has to be gone before Qt's own statics are, which a static one is not.
int main(int argc, char** argv) {
  testing::InitGoogleTest(&argc, argv);
  qputenv("QT_QPA_PLATFORM", "offscreen");
  const QGuiApplication application(argc, argv);
  return RUN_ALL_TESTS();
}
