#pragma once

#include <QUrl>

namespace sonvel {

/// Registers the QML module Sonvel with RootPanel. Call before loading a view; repeated calls have no effect.
/// Main thread.
void registerViews();

/// The address of RootPanel. It needs a PanelTheme installed in its engine, the image providers `symbol` and
/// `app-icon`, and the initial properties `model` (a MixerViewModel that outlives it) and `serverNotice` (a
/// text, empty while sound works). It tells the model when it appears and disappears. Signals:
/// quitRequested() and settingsRequested(QUrl); set `settingsMissing` if the settings can't be shown.
QUrl rootPanelURL();

} // namespace sonvel
