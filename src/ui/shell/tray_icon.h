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

/// The icon in the desktop's tray (a StatusNotifierItem), with a menu for desktops that support nothing else.
/// It appears whenever the desktop starts to show such icons. Its title is
/// QCoreApplication::applicationName(). Main thread, with a QApplication.
class TrayIcon final : public QObject {
  Q_OBJECT

 public:
  explicit TrayIcon(const QDBusConnection& bus = QDBusConnection::sessionBus());
  ~TrayIcon() override;
  TrayIcon(const TrayIcon&) = delete;
  TrayIcon& operator=(const TrayIcon&) = delete;

  void setIcon(const QIcon& icon);

  /// The tool tip, besides the title.
  void setToolTip(const QString& text);

  /// Check marks in the menu.
  void setMuted(bool isMuted) { mute_.setChecked(isMuted); }

  void setStartsAtLogin(bool starts) { startAtLogin_.setChecked(starts); }

  /// Whether it is visible; none until known, shortly after the start.
  [[nodiscard]] std::optional<bool> isShown() const noexcept { return hosts_.isHosted(); }

  /// Its position; empty if the desktop does not tell, as usual.
  [[nodiscard]] QRect geometry() const;

 Q_SIGNALS:
  /// Emitted with isShown() when first known and at each change.
  void shownChanged(bool isShown);
  /// With the place of the click, in logical pixels of all screens; null if unknown.
  void clicked(const QPoint& place);
  /// In notches; positive away from the user.
  void wheelTurned(int notches);
  void openChosen();
  /// From the menu or the middle button.
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
  std::unique_ptr<QObject> exported_;     // replaces Qt's own object; holds item_
  StatusItem* item_ = nullptr;
};

} // namespace sonvel::ui
