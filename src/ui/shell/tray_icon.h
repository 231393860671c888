#pragma once

#include "ui/shell/tray_host_watch.h"

#include <QDBusConnection>
#include <QIcon>
#include <QMenu>
#include <QObject>
#include <QRect>
#include <QSystemTrayIcon>
#include <memory>
#include <optional>

namespace sonvel::ui {

/// The icon in the desktop's tray (a StatusNotifierItem), with a menu for desktops that show nothing else. It
/// comes whenever the desktop begins to show such icons. Its title is QCoreApplication::applicationName().
/// Main thread, with a QApplication.
class TrayIcon final : public QObject {
  Q_OBJECT

 public:
  explicit TrayIcon(QIcon icon, const QDBusConnection& bus = QDBusConnection::sessionBus());
  ~TrayIcon() override;
  TrayIcon(const TrayIcon&) = delete;
  TrayIcon& operator=(const TrayIcon&) = delete;

  void setIcon(const QIcon& icon);

  /// Whether it can be seen; nothing as long as that is not known, which is a moment at the start.
  [[nodiscard]] std::optional<bool> isShown() const noexcept { return hosts_.isHosted(); }

  /// Where it is; empty when the desktop doesn't tell, which is the rule.
  [[nodiscard]] QRect geometry() const;

 Q_SIGNALS:
  /// What isShown() says now, from the first time on.
  void shownChanged(bool isShown);
  void clicked();
  void openChosen();
  void quitChosen();

 private:
  void follow(bool isHosted);

  QIcon icon_;
  QMenu menu_;
  TrayHostWatch hosts_;
  std::unique_ptr<QSystemTrayIcon> tray_; // while there is a host
};

} // namespace sonvel::ui
