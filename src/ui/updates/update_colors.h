#pragma once

#include "platform/appearance.h"

#include <QColor>
#include <QPalette>

namespace sonvel {

/// What the update window is drawn in. Text has a contrast of 4.5 to 1 at least on what it stands on.
struct UpdateColors {
  QColor window;
  QColor well; ///< behind the release notes
  QColor primary;
  QColor secondary;
  QColor separator;
  QColor control;
  QColor accent;
  QColor onAccent;
  QColor groove;
  QColor good;
  QColor bad;
};

/// Light or dark as the desktop wants it, or as `palette` is where it doesn't say.
UpdateColors updateColors(const Appearance& appearance, const QPalette& palette);

/// From 1 (the same) to 21 (black on white), by what the eye makes of them.
double contrastRatio(const QColor& one, const QColor& other);

} // namespace sonvel
