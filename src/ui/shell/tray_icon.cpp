#include "ui/shell/tray_icon.h"

#include <utility>

namespace sonvel::ui {

TrayIcon::TrayIcon(QIcon icon, const QDBusConnection& bus)
    : icon_(std::move(icon))
    , hosts_(bus) {
  connect(menu_.addAction(QStringLiteral("Open Sonvel")), &QAction::triggered, this, &TrayIcon::openChosen);
  connect(menu_.addAction(QStringLiteral("Quit")), &QAction::triggered, this, &TrayIcon::quitChosen);
  connect(&hosts_, &TrayHostWatch::changed, this, &TrayIcon::follow);
}

TrayIcon::~TrayIcon() = default;

void TrayIcon::setIcon(const QIcon& icon) {
  icon_ = icon;
  if (tray_) tray_->setIcon(icon_);
}

QRect TrayIcon::geometry() const {
  return tray_ ? tray_->geometry() : QRect();
}

// Qt asks once in a process whether there is a host, when the first icon is made, and remembers the answer:
// no icon before there is one.
void TrayIcon::follow(bool isHosted) {
  tray_.reset();
  if (isHosted) {
    tray_ = std::make_unique<QSystemTrayIcon>(icon_);
    tray_->setToolTip(QStringLiteral("Sonvel"));
    tray_->setContextMenu(&menu_);
    connect(tray_.get(), &QSystemTrayIcon::activated, this, [this](QSystemTrayIcon::ActivationReason reason) {
      if (reason == QSystemTrayIcon::Trigger) Q_EMIT clicked();
    });
    tray_->show();
  }
  Q_EMIT shownChanged(isHosted);
}

} // namespace sonvel::ui
