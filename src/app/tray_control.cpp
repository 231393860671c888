#include "app/tray_control.h"

#include "audio/mixer_math.h"

#include <QGuiApplication>
#include <QMessageBox>
#include <algorithm>

namespace sonvel {
namespace {

constexpr int kPointsPerNotch = 5;

/// A theme name, so that the tray's host recolours it; pixels where the icon is not installed.
QIcon trayIcon(const QString& name) {
  return QIcon::fromTheme(name, QIcon(QLatin1String(":/sonvel/tray/") + name + QLatin1String(".svg")));
}

bool isAmplified(const ChannelList::Row& row) {
  return row->isPlaying() && !row->muted() && MixerMath::isBoost(row->gainPercent());
}

} // namespace

TrayControl::TrayControl(ui::TrayIcon& tray, MixerViewModel& model, const Audio& audio, QString updateManager)
    : tray_(tray)
    , model_(model)
    , updateManager_(std::move(updateManager))
    , master_(audio.hardware, audio.onAudioThread, audio.mainThread,
              [this](const MasterControl::State& state) {
                shown_ = state;
                update();
              }) {
  connect(&tray_, &ui::TrayIcon::wheelTurned, this,
          [this](int notches) { master_.change(notches * kPointsPerNotch); });
  connect(&tray_, &ui::TrayIcon::muteChosen, this, [this] {
    update(); // the menu has changed its check mark, which must follow the volume only
    master_.toggleMute();
  });
  connect(&tray_, &ui::TrayIcon::startAtLoginChosen, this, [this](bool starts) {
    autostart_.set(starts);
    tray_.setStartsAtLogin(autostart_.isOn());
  });
  connect(&tray_, &ui::TrayIcon::aboutChosen, this, &TrayControl::showAbout);
  rowsChanged_.setSingleShot(true);
  rowsChanged_.setInterval(0);
  connect(&rowsChanged_, &QTimer::timeout, this, &TrayControl::updateIcon);
  connect(model_.channels(), &QAbstractItemModel::rowsRemoved, this, [this] { rowsChanged_.start(); });
  connect(model_.channels(), &QAbstractItemModel::rowsInserted, this,
          [this](const QModelIndex&, int first, int last) { follow(first, last); });
  tray_.setStartsAtLogin(autostart_.isOn());
  update();
}

void TrayControl::follow(int first, int last) {
  const auto note = [this] { rowsChanged_.start(); };
  for (int i = first; i <= last; ++i) {
    const auto* const row = model_.channels()->rows().at(static_cast<std::size_t>(i)).get();
    connect(row, &ChannelState::gainPercentChanged, this, note);
    connect(row, &ChannelState::mutedChanged, this, note);
    connect(row, &ChannelState::isPlayingChanged, this, note);
  }
  note();
}

void TrayControl::updateIcon() {
  QString name = QStringLiteral("com.quellmarsh.sonvel-symbolic");
  if (shown_.isMuted())
    name = QStringLiteral("com.quellmarsh.sonvel-muted-symbolic");
  else if (std::ranges::any_of(model_.channels()->rows(), isAmplified))
    name = QStringLiteral("com.quellmarsh.sonvel-amplified-symbolic");
  if (std::exchange(shownIcon_, name) != name) tray_.setIcon(trayIcon(name));
}

void TrayControl::update() {
  updateIcon();
  tray_.setMuted(shown_.isMuted());
  tray_.setToolTip(toolTip());
}

QString TrayControl::toolTip() const {
  auto device = QString::fromStdString(shown_.device);
  if (device.isEmpty()) return tr("No output device");
  if (!shown_.percent) return device;
  return shown_.isMuted() ? tr("%1: muted").arg(device)
                          : tr("%1: %2%").arg(device, QString::number(*shown_.percent));
}

void TrayControl::showAbout() {
  const auto text = tr("Sonvel %1\n\nA volume for every application. Apache licence 2.0.")
                        .arg(QCoreApplication::applicationVersion());
  const auto updates =
      updateManager_.isEmpty() ? QString() : tr("\nUpdates come with %1.").arg(updateManager_);
  // deletes itself when closed; NOLINTNEXTLINE(cppcoreguidelines-owning-memory)
  auto* const box = new QMessageBox(QMessageBox::NoIcon, tr("About Sonvel"), text + updates);
  box->addButton(tr("Close"), QMessageBox::RejectRole);
  box->setAttribute(Qt::WA_DeleteOnClose);
  box->setIconPixmap(QGuiApplication::windowIcon().pixmap(64));
  box->setModal(false);
  box->show();
}

} // namespace sonvel
