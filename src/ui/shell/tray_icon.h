#pragma once

#include "ui/shell/status_item.h"
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
  explicit TrayIcon(const QDBusConnection& bus = QDBusConnection::sessionBus());
  ~TrayIcon() override;
  TrayIcon(const TrayIcon&) = delete;
  TrayIcon& operator=(const TrayIcon&) = delete;

  void setIcon(const QIcon& icon);

  /// What is said where the pointer rests, besides the title.
  void setToolTip(const QString& text);

  /// The marks in the menu.
  void setMuted(bool isMuted) { mute_.setChecked(isMuted); }

  void setStartsAtLogin(bool starts) { startAtLogin_.setChecked(starts); }

  /// Whether it can be seen; nothing as long as that is not known, which is a moment at the start.
  [[nodiscard]] std::optional<bool> isShown() const noexcept { return hosts_.isHosted(); }

  /// Where it is; empty when the desktop doesn't tell, which is the rule.
  [[nodiscard]] QRect geometry() const;

 Q_SIGNALS:
  /// What isShown() says now, from the first time on.
  void shownChanged(bool isShown);
  void clicked();
  /// By so many notches, away from the user above 0.
  void wheelTurned(int notches);
  void openChosen();
  /// In the menu or by the middle button.
  void muteChosen();
  void startAtLoginChosen(bool starts);
  void aboutChosen();
  void quitChosen();

 private:
  void follow(bool isHosted);
  void takeOver();
  QAction& add(const QString& text);

  QIcon icon_;
  QString toolTip_;
  QMenu menu_;
  QAction& open_;
  QAction& mute_;
  QAction& startAtLogin_;
  TrayHostWatch hosts_;
  std::unique_ptr<QSystemTrayIcon> tray_; // while there is a host
  std::unique_ptr<QObject> exported_;     // in the place of the toolkit's own, with item_ on it
  StatusItem* item_ = nullptr;
};

} // namespace sonvel::ui
