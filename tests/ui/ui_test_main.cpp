// The QGuiApplication of the view tests.

#include <gtest/gtest.h>

#include <QAccessible>
#include <QApplication>
#include <QFont>
#include <QLocale>

int main(int argc, char** argv) {
  testing::InitGoogleTest(&argc, argv);
  qputenv("QT_QPA_PLATFORM", "offscreen");
  qputenv("QT_QUICK_BACKEND", "software");
  QLocale::setDefault(QLocale("en_US"));
  const QApplication application(argc, argv);
  QGuiApplication::setFont(QFont("DejaVu Sans", 10));
  QAccessible::setActive(true);
  qInstallMessageHandler([](QtMsgType type, const QMessageLogContext&, const QString& message) {
    const bool isRemark = type == QtDebugMsg || type == QtInfoMsg;
    const bool isOfOffscreen = message.startsWith("This plugin does not support");
    if (!isRemark && !isOfOffscreen) ADD_FAILURE() << message.toStdString();
  });
  return RUN_ALL_TESTS();
}
