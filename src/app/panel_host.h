#pragma once

#include "app/program_audio.h"
#include "app/server_notice.h"
#include "app/tray_control.h"
#include "desktop/portal_appearance.h"
#include "model/mixer_view_model.h"
#include "ui/icons/app_icon_cache.h"
#include "ui/presentation/panel_theme.h"
#include "ui/shell/panel_presence.h"
#include "ui/shell/panel_window.h"
#include "ui/shell/tray_icon.h"

#include <QObject>

namespace sonvel {

/// The panel on the desktop: its views in a window at a tray icon, or in a plain window. Main thread, with a
/// QApplication.
class PanelHost final : public QObject {
  Q_OBJECT

 public:
  struct Actions {
    Relay::Post onAudioThread;  ///< posts to a thread that may call the audio system
    std::function<void()> quit; ///< called when the user asks to quit
    bool isFoundAgain = true;   ///< a second start of the program shows this panel
  };

  /// Shows the icon. The referents outlive this object.
  PanelHost(MixerViewModel& model, ProgramAudio& audio, DesktopAppearance& appearance, Executor& mainThread,
            Actions actions);

  /// Opens the panel without its icon, for a second start or a bus call.
  void show() { presence_.show(); }

  /// Closes the panel for good, before the program ends.
  void end() { presence_.end(); }

 Q_SIGNALS:
  void serverNoticeChanged();
  void closingChanged();

 private:
  ui::PanelContent content(MixerViewModel& model);
  void prepareEngine(QQmlEngine& engine);
  void connectRoot(QQuickItem& root);

  Q_SLOT void onQuitRequested();
  Q_SLOT void onSettingsRequested();
  Q_SLOT void onClosingChosen(bool quits);

  const std::function<void()> quit_;
  const bool isFoundAgain_;
  Preferences& preferences_;
  const QString updateManager_; // name of what updates this copy instead, such as a package manager
  PanelTheme theme_;
  AppIconCache icons_;
  ServerNotice notice_;
  ui::TrayIcon tray_;
  TrayControl trayControl_;
  ui::PanelWindow window_;
  ui::PanelPresence presence_;
};

} // namespace sonvel
