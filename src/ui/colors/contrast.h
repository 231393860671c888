#pragma once

#include <QColor>
#include <functional>

/// How well one colour is seen on another, as the accessibility guidelines of the web define it. Pure; opaque
/// colours. Any thread.
namespace sonvel::contrast {

/// 0.0 for black to 1.0 for white.
double luminance(const QColor& color);

/// 1.0 for equal colours to 21.0 for black on white.
double ratio(const QColor& one, const QColor& other);

/// What is seen where `color`, at `opacity` from 0.0 to 1.0, lies on `background`.
QColor over(const QColor& background, const QColor& color, double opacity);

/// `color`, or as little away from it towards `end` as `isLegible` asks for; `end` if nothing else will do.
QColor towards(const QColor& color, const QColor& end, const std::function<bool(const QColor&)>& isLegible);

} // namespace sonvel::contrast
