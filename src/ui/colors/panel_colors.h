#pragma once

#include "platform/appearance.h"

#include <QColor>
#include <QPalette>

namespace sonvel {

/// The panel's colours. Wherever they are used, also on the card and in paused rows, text has a contrast of
/// at least 4.5, also when it is small and so drawn with blurred edges, and symbols of at least 3.
struct PanelColors {
  static constexpr double textRatio = 4.5;
  static constexpr double symbolRatio = 3.0;
  static constexpr double highTextRatio = 7.0; ///< in high contrast; symbols have textRatio then

  QColor window;
  QColor primary;   ///< text
  QColor secondary; ///< less important text
  QColor tertiary;  ///< less important symbols
  QColor disabled;  ///< text of a disabled button, on `window` alone
  QColor accent;    ///< text and symbols in the user's colour
  QColor tint;      ///< the filled part of a slider, in the user's colour
  QColor prominent; ///< the main button, in the user's colour
  QColor onAccent;  ///< text on `prominent`
  QColor separator;
  QColor fill;    ///< behind the card
  QColor control; ///< a button
  QColor groove;  ///< a slider's track
  QColor handle;  ///< a slider's handle
  QColor menu;    ///< behind menus and tool tips
  QColor orange;
  QColor red;
  QColor green;
  QColor yellow;

  bool operator==(const PanelColors&) const = default;
};

/// The desktop's colours if they fit its colour scheme and are legible, else similar ones.
PanelColors panelColors(const Appearance& appearance, const QPalette& palette);

} // namespace sonvel
