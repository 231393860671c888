#include "ui/shell/tray_icon.h"

#include <QCoreApplication>
#include <utility>

namespace sonvel::ui {
namespace {

const QString kItemPath = QStringLiteral("/StatusNotifierItem");
const QString kMenuPath = QStringLiteral("/MenuBar");

/// The connection on which Qt serves its newest icon. Qt numbers them, including some for internal use.
std::optional<QDBusConnection> newestItemConnection() {
  constexpr int kMostIcons = 64; // one for each appearance of a tray, and some spare
  std::optional<QDBusConnection> newest;
  for (int number = 1; number <= kMostIcons; ++number) {
    const QDBusConnection connection(QStringLiteral("org.kde.StatusNotifierItem-%1-%2")
                                         .arg(QCoreApplication::applicationPid())
                                         .arg(number));
    if (connection.isConnected() && connection.objectRegisteredAt(kItemPath) != nullptr) newest = connection;
  }
  return newest;
}

} // namespace

TrayIcon::TrayIcon(const QDBusConnection& bus)
    : open_(add(tr("Open Sonvel")))
    , mute_(add(tr("Mute")))
    , startAtLogin_(add(tr("Start at login")))
    , hosts_(bus) {
  connect(&open_, &QAction::triggered, this, &TrayIcon::openChosen);
  mute_.setCheckable(true);
  connect(&mute_, &QAction::triggered, this, &TrayIcon::muteChosen);
  startAtLogin_.setCheckable(true);
  connect(&startAtLogin_, &QAction::triggered, this, &TrayIcon::startAtLoginChosen);
  connect(&add(tr("About Sonvel")), &QAction::triggered, this, &TrayIcon::aboutChosen);
  menu_.addSeparator();
  connect(&add(tr("Quit")), &QAction::triggered, this, &TrayIcon::quitChosen);
  connect(&hosts_, &TrayHostWatch::changed, this, &TrayIcon::follow);
}

TrayIcon::~TrayIcon() = default;

QAction& TrayIcon::add(const QString& text) {
  return *menu_.addAction(text);
}

void TrayIcon::setIcon(const QIcon& icon) {
  icon_ = icon;
  if (tray_) tray_->setIcon(icon_);
  if (item_ != nullptr) item_->setIcon(icon_);
}

void TrayIcon::setToolTip(const QString& text) {
  toolTip_ = text;
  if (tray_) tray_->setToolTip(QCoreApplication::applicationName() + QLatin1Char('\n') + toolTip_);
  if (item_ != nullptr) item_->setToolTip(toolTip_);
}

QRect TrayIcon::geometry() const {
  return tray_ ? tray_->geometry() : QRect();
}

// Qt checks only once per process whether there is a host, when the first icon is created: so create no icon
// before there is one.
void TrayIcon::follow(bool isHosted) {
  item_ = nullptr;
  exported_.reset();
  tray_.reset();
  if (isHosted) {
    tray_ = std::make_unique<QSystemTrayIcon>(icon_);
    tray_->setContextMenu(&menu_);
    connect(tray_.get(), &QSystemTrayIcon::activated, this, [this](QSystemTrayIcon::ActivationReason reason) {
      if (reason == QSystemTrayIcon::Trigger) Q_EMIT clicked({});
      if (reason == QSystemTrayIcon::MiddleClick) Q_EMIT muteChosen();
    });
    tray_->show();
    takeOver();
    setToolTip(toolTip_);
  }
  Q_EMIT shownChanged(isHosted);
}

// Replaces Qt's item, which ignores the wheel and has no tool tip text, but keeps its menu and place in the
// tray. No host can have called the item yet, because calls arrive through the event loop.
void TrayIcon::takeOver() {
  auto connection = newestItemConnection();
  if (!connection) return;
  exported_ = std::make_unique<QObject>();
  // NOLINTNEXTLINE(cppcoreguidelines-owning-memory): a child
  item_ = new StatusItem(*exported_, kMenuPath,
                         {.clicked = [this](const QPoint& place) { Q_EMIT clicked(place); },
                          .middleClicked = [this] { Q_EMIT muteChosen(); },
                          .wheelTurned = [this](int notches) { Q_EMIT wheelTurned(notches); }});
  connection->unregisterObject(kItemPath);
  connection->registerObject(kItemPath, exported_.get(), QDBusConnection::ExportAdaptors);
  item_->setIcon(icon_);
}

} // namespace sonvel::ui
