#pragma once

#include <QDBusAbstractAdaptor>
#include <QDBusObjectPath>
#include <QIcon>
#include <QList>
#include <QObject>
#include <QPoint>
#include <functional>

namespace sonvel::ui {

/// A picture for trays: 32 bits per pixel: alpha, red, green, blue.
struct TrayPicture {
  int width = 0;
  int height = 0;
  QByteArray points;
};

using TrayPictures = QList<TrayPicture>;

/// The tool tip of the tray icon.
struct TrayToolTip {
  QString icon;
  TrayPictures pictures;
  QString title;
  QString text;
};

/// User actions on the icon. Called from the event loop.
struct TrayActions {
  std::function<void(const QPoint& place)> clicked; ///< in logical pixels of all screens; null if unknown
  std::function<void()> middleClicked;
  std::function<void(int)> wheelTurned; ///< in notches; positive away from the user
};

/// The tray icon as an org.kde.StatusNotifierItem: what it shows, and the user's actions. Main thread.
class StatusItem final : public QDBusAbstractAdaptor {
  Q_OBJECT
  Q_CLASSINFO("D-Bus Interface", "org.kde.StatusNotifierItem")
  Q_PROPERTY(QString Category READ category CONSTANT)
  Q_PROPERTY(QString Id READ title CONSTANT)
  Q_PROPERTY(QString Title READ title CONSTANT)
  Q_PROPERTY(QString Status READ status CONSTANT)
  Q_PROPERTY(int WindowId READ windowId CONSTANT)
  Q_PROPERTY(QString IconName READ iconName)
  Q_PROPERTY(sonvel::ui::TrayPictures IconPixmap READ pictures)
  Q_PROPERTY(QString OverlayIconName READ none CONSTANT)
  Q_PROPERTY(QString AttentionIconName READ none CONSTANT)
  Q_PROPERTY(sonvel::ui::TrayToolTip ToolTip READ toolTip)
  Q_PROPERTY(QDBusObjectPath Menu READ menu CONSTANT)
  Q_PROPERTY(bool ItemIsMenu READ isMenu CONSTANT)

 public:
  /// `menu` is the object path of its menu on the same connection.
  StatusItem(QObject& exported, const QString& menu, TrayActions actions);

  /// Notifies the tray.
  void setIcon(const QIcon& icon);
  void setToolTip(const QString& text);

  QString category() const { return QStringLiteral("Hardware"); }

  QString title() const;

  QString status() const { return QStringLiteral("Active"); }

  int windowId() const { return 0; }

  QString iconName() const { return icon_.name(); }

  /// In the usual tray sizes.
  TrayPictures pictures() const;

  QString none() const { return {}; }

  TrayToolTip toolTip() const { return {{}, {}, title(), toolTip_}; }

  QDBusObjectPath menu() const { return menu_; }

  bool isMenu() const { return false; }

  // The names are those of the interface. NOLINTBEGIN(readability-identifier-naming)
  Q_SLOT void Activate(int x, int y) { actions_.clicked({x, y}); }

  /// Called before Activate.
  Q_SLOT void ProvideXdgActivationToken(const QString& token);

  Q_SLOT void SecondaryActivate(int, int) { actions_.middleClicked(); }

  Q_SLOT void ContextMenu(int, int) {}

  /// One notch is 120; touchpads send less.
  Q_SLOT void Scroll(int delta, const QString& orientation);

 Q_SIGNALS:
  void NewIcon();
  void NewToolTip();
  // NOLINTEND(readability-identifier-naming)

 private:
  const QDBusObjectPath menu_;
  const TrayActions actions_;
  QIcon icon_;
  QString toolTip_;
  int turned_ = 0;
};

} // namespace sonvel::ui
