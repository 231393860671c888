#pragma once

#include "platform/appearance.h"

#include <QColor>
#include <QPalette>

namespace sonvel {

/// What the panel is drawn in. Where the panel shows them, also on the card and in a paused row, text has a
/// contrast of 4.5 to 1 and symbols have one of 3 to 1.
struct PanelColors {
  static constexpr double textRatio = 4.5;
  static constexpr double symbolRatio = 3.0;

  QColor window;
  QColor primary;   ///< text
  QColor secondary; ///< text that steps back
  QColor tertiary;  ///< symbols that step back further
  QColor accent;    ///< text and symbols in the user's colour
  QColor tint;      ///< the filled part of a slider, in the user's colour
  QColor prominent; ///< the button to press, in the user's colour
  QColor onAccent;  ///< text on that
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

/// The desktop's own colours where they suit its colour scheme and can be read, else ones like them.
PanelColors panelColors(const Appearance& appearance, const QPalette& palette);

} // namespace sonvel
