#pragma once

#include <QColor>
#include <functional>

/// The contrast of two colours, as WCAG defines it. Pure; opaque colours. Any thread.
namespace sonvel::contrast {

/// 0.0 for black to 1.0 for white.
double luminance(const QColor& color);

/// 1.0 for equal colours to 21.0 for black on white.
double ratio(const QColor& one, const QColor& other);

/// The visible colour where `color`, with `opacity` from 0.0 to 1.0, is drawn on `background`.
QColor over(const QColor& background, const QColor& color, double opacity);

/// `color` if `isLegible`, else the nearest legible colour on the way to `end`; `end` if there is none.
QColor towards(const QColor& color, const QColor& end, const std::function<bool(const QColor&)>& isLegible);

} // namespace sonvel::contrast
