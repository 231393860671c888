#pragma once

#include <QUrl>

namespace sonvel {

/// Makes the module Sonvel known to QML: RootPanel and what it is made of. Before the first view is loaded; a
/// second call does nothing. Main thread.
void registerViews();

/// The panel, RootPanel. It needs a PanelTheme installed in its engine, the image providers `symbol` and
/// `app-icon`, and the initial properties `model` (a MixerViewModel, which outlives it) and `serverNotice` (a
/// text, empty while sound works). It tells the model that it has appeared when it is made and that it has
/// gone when it ends. Its signals are quitRequested() and
/// settingsRequested(QUrl); who can't show the settings sets `settingsMissing`.
QUrl rootPanelURL();

} // namespace sonvel
