#include "ui/presentation/views.h"

/// Made by the build from the types and files of the module.
void qml_register_types_Sonvel(); // NOLINT(readability-identifier-naming): named by the build

namespace sonvel {

void registerViews() {
  qml_register_types_Sonvel();
}

QUrl rootPanelURL() {
  return QUrl(QStringLiteral("qrc:/qt-project.org/imports/Sonvel/RootPanel.qml"));
}

} // namespace sonvel
