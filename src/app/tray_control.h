#pragma once

#include "audio/master_control.h"
#include "desktop/autostart.h"
#include "model/mixer_view_model.h"
#include "ui/shell/tray_icon.h"

#include <QObject>
#include <QTimer>

namespace sonvel {

/// The tray icon shows and changes the master volume, and switches the start at login. Main thread.
class TrayControl final : public QObject {
  Q_OBJECT

 public:
  /// What it needs besides the model, as MasterControl requires it.
  struct Audio {
    AudioHardware& hardware;
    Relay::Post onAudioThread;
    Executor& mainThread;
  };

  /// `updateManager` is the name of what updates a copy that does not update itself; empty: nothing. The
  /// referents outlive this object.
  TrayControl(ui::TrayIcon& tray, MixerViewModel& model, const Audio& audio, QString updateManager);

  /// Call when the sound server comes or goes.
  void refresh() { master_.refresh(); }

 private:
  void update();
  void updateIcon();
  void follow(int first, int last);
  QString toolTip() const;
  void showAbout();

  ui::TrayIcon& tray_;
  MixerViewModel& model_;
  const desktop::Autostart autostart_{desktop::startedProgram()};
  const QString updateManager_;
  QString shownIcon_;
  QTimer rowsChanged_; ///< collects the changes of all rows in one turn of the event loop
  MasterControl::State shown_;
  MasterControl master_; // last member, because it calls this object
};

} // namespace sonvel
