#pragma once

#include <functional>
#include <memory>

class QPoint;
class QWindow;

namespace sonvel::ui {

/// Asks a Wayland compositor to show the window in the screen's corner nearest to `place`, beside the
/// desktop's bars and over other windows, with the keyboard's focus. `place` is in logical pixels of all
/// screens. Call before the window is shown for the first time; it keeps this role for good.
///
/// Returns an invisible window, to be shown before it, that covers the rest of the screen but for the bars:
/// some compositors leave the focus where it is at a click there. The window calls `clickedBeside` then.
/// Null, and nothing is done, on other platforms, where the compositor lacks the layer shell, and in a build
/// without it. Main thread; blocks for one answer of the compositor at the first call.
[[nodiscard]] std::unique_ptr<QWindow> layInCorner(QWindow& window, const QPoint& place,
                                                   const std::function<void()>& clickedBeside);

} // namespace sonvel::ui
