#include "app/panel_host.h"

#include "app/installed_page.h"
#include "ui/icons/app_icon_provider.h"
#include "ui/presentation/views.h"
#include "ui/shell/accessible_placeholders.h"
#include "ui/symbols/symbol_image_provider.h"
#include "updater/sparkle_update_controller.h"

#include <QCoreApplication>
#include <QDir>
#include <QPointer>
#include <QQmlEngine>
#include <QQuickItem>

namespace sonvel {

namespace {

// Without a tray icon: whether closing the window quits, and whether the user was asked.
constexpr const char* kQuitsOnClose = "quitsOnClose";
constexpr const char* kClosingIsExplained = "closingIsExplained";

QString updateManager(const BundleInformation& bundle) {
  const auto value = bundle.objectForInfoKey(SparkleUpdateController::updateManagerKey);
  const auto* const text = value ? std::get_if<std::string>(&*value) : nullptr;
  return text != nullptr ? QString::fromStdString(*text) : QString();
}

} // namespace

PanelHost::PanelHost(MixerViewModel& model, ProgramAudio& audio, DesktopAppearance& appearance,
                     Executor& mainThread, Actions actions)
    : quit_(std::move(actions.quit))
    , isFoundAgain_(actions.isFoundAgain)
    , preferences_(audio.preferences())
    , updateManager_(updateManager(audio.bundle()))
    , theme_(appearance)
    , icons_(audio.applications(), audio.icons())
    , notice_(
          audio.server(), mainThread, [&audio] { return audio.isForeignSoundServing(); },
          [this](const QString&) { Q_EMIT serverNoticeChanged(); })
    , trayControl_(tray_, model, {audio.environment().hardware, std::move(actions.onAudioThread), mainThread},
                   updateManager_)
    , window_(content(model), audio.clock())
    , presence_(
          window_, [this] { return tray_.geometry(); },
          [this] {
            if (!isFoundAgain_ || preferences_.boolForKey(kQuitsOnClose)) quit_();
          }) {
  registerViews();
  ui::installAccessiblePlaceholders();
  connect(this, &PanelHost::serverNoticeChanged, &trayControl_, &TrayControl::refresh);
  QObject::connect(&tray_, &ui::TrayIcon::clicked, &presence_, &ui::PanelPresence::clickIcon);
  QObject::connect(&tray_, &ui::TrayIcon::openChosen, &presence_, &ui::PanelPresence::show);
  QObject::connect(&tray_, &ui::TrayIcon::quitChosen, &presence_, quit_);
  connect(&tray_, &ui::TrayIcon::shownChanged, this, [this](bool isShown) {
    presence_.setTrayShown(isShown);
    Q_EMIT closingChanged();
  });
  if (const auto isShown = tray_.isShown()) presence_.setTrayShown(*isShown);
}

ui::PanelContent PanelHost::content(MixerViewModel& model) {
  return {.source = rootPanelURL(),
          .properties = {{"model", QVariant::fromValue(&model)},
                         {"serverNotice", QString()},
                         {"updatesComeWithPackages", !updateManager_.isEmpty()}},
          .prepareEngine = [this](QQmlEngine& engine) { prepareEngine(engine); },
          .ready = [this](QQuickItem& root) { connectRoot(root); }};
}

void PanelHost::prepareEngine(QQmlEngine& engine) {
  theme_.install(engine);
  engine.addImageProvider(SymbolImageProvider::kID, std::make_unique<SymbolImageProvider>().release());
  engine.addImageProvider(AppIconProvider::kID, std::make_unique<AppIconProvider>(icons_).release());
}

void PanelHost::connectRoot(QQuickItem& root) {
  const auto tell = [this, &root] {
    root.setProperty("serverNotice", notice_.text());
    root.setProperty("serverHasAnswered", notice_.hasServerAnswered());
    root.setProperty("soundIsElsewhere", notice_.isSoundElsewhere());
  };
  notice_.update();
  tell();
  connect(this, &PanelHost::serverNoticeChanged, &root, tell);
  const auto tellOfClosing = [this, &root] {
    root.setProperty("quitsOnClose", preferences_.boolForKey(kQuitsOnClose));
    root.setProperty("isClosingExplained", preferences_.boolForKey(kClosingIsExplained));
    root.setProperty("isWithoutIcon", isFoundAgain_ && presence_.isWithoutIcon());
  };
  tellOfClosing();
  connect(this, &PanelHost::closingChanged, &root, tellOfClosing);
  connect(&window_, &ui::PanelWindow::seenChanged, &root,
          [&root](bool isSeen) { root.setProperty("isSeen", isSeen); });
  connect(&root, SIGNAL(closingChosen(bool)), this, SLOT(onClosingChosen(bool)));
  connect(&root, SIGNAL(quitRequested()), this, SLOT(onQuitRequested()));
  connect(&root, SIGNAL(settingsRequested(QUrl)), this, SLOT(onSettingsRequested()));
}

void PanelHost::onQuitRequested() {
  quit_();
}

void PanelHost::onClosingChosen(bool quits) {
  preferences_.setBool(quits, kQuitsOnClose);
  preferences_.setBool(true, kClosingIsExplained);
  Q_EMIT closingChanged();
}

// Desktops have no settings for this, so open the installed page that explains how to give access.
void PanelHost::onSettingsRequested() {
  const QDir programFolder(QCoreApplication::applicationDirPath());
  const QString page = QDir::cleanPath(programFolder.filePath(QStringLiteral(SONVEL_ACCESS_PAGE)));
  openInstalledPage(page, [root = QPointer(sender())] {
    if (root) root->setProperty("settingsMissing", true);
  });
}

} // namespace sonvel
