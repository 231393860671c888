#pragma once

#include "audio/master_control.h"
#include "desktop/autostart.h"
#include "model/mixer_view_model.h"
#include "ui/shell/tray_icon.h"

#include <QObject>

namespace sonvel {

/// Has the tray icon show the master volume and change it, and start the program at login. Main thread.
class TrayControl final : public QObject {
  Q_OBJECT

 public:
  /// What else it works on, as MasterControl has it.
  struct Audio {
    AudioHardware& hardware;
    Relay::Post onAudioThread;
    Executor& mainThread;
  };

  /// `updateManager` says what updates a copy that doesn't do so itself; empty: nothing. The others outlive
  /// this object.
  TrayControl(ui::TrayIcon& tray, MixerViewModel& model, const Audio& audio, QString updateManager);

  /// The sound server has come or gone.
  void refresh() { master_.refresh(); }

 private:
  void update();
  void follow(int first, int last);
  QString toolTip() const;
  void showAbout();

  ui::TrayIcon& tray_;
  MixerViewModel& model_;
  const desktop::Autostart autostart_{desktop::startedProgram()};
  const QString updateManager_;
  QString shownIcon_;
  MasterControl::State shown_;
  MasterControl master_; // last, for it calls this
};

} // namespace sonvel
