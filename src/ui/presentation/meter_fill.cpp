#include "ui/presentation/meter_fill.h"

#include "ui/presentation/panel_text.h"

#include <QLinearGradient>
#include <QPainter>
#include <QQuickWindow>
#include <algorithm>

namespace sonvel {

namespace {

constexpr int kRiseMilliseconds = 80;
constexpr int kFallMilliseconds = 300;

// A meter scrolled out of view needs no steps of its own; it is updated in the next frame of the visible
// ones.
constexpr int kUnseenMilliseconds = 1;

} // namespace

void MeterFill::Glide::begin(int milliseconds) {
  stop();
  milliseconds_ = milliseconds;
  from_ = meter_.shown_;
  start();
}

void MeterFill::Glide::updateCurrentTime(int milliseconds) {
  if (milliseconds_ == 0) return; // not started
  const double way = static_cast<double>(milliseconds) / milliseconds_;
  meter_.show(milliseconds < milliseconds_ ? from_ + (meter_.level_ - from_) * way : meter_.level_);
}

void MeterFill::setLevel(double level) {
  level = PanelText::meterFraction(level);
  if (level == level_) return;
  level_ = level;
  Q_EMIT levelChanged();
  if (!animates_) {
    glide_.stop();
    show(level_);
  } else if (!isInWindow()) {
    glide_.begin(kUnseenMilliseconds);
  } else {
    glide_.begin(level_ > shown_ ? kRiseMilliseconds : kFallMilliseconds);
  }
}

void MeterFill::show(double fraction) {
  if (fraction == shown_) return;
  shown_ = fraction;
  update();
  Q_EMIT shownChanged();
}

void MeterFill::setMirrored(bool isMirrored) {
  if (isMirrored == isMirrored_) return;
  isMirrored_ = isMirrored;
  update();
  Q_EMIT mirroredChanged();
}

void MeterFill::setColor(QColor& which, const QColor& color) {
  if (color == which) return;
  which = color;
  update();
  Q_EMIT colorsChanged();
}

bool MeterFill::isInWindow() const {
  const double top = mapToScene({0.0, 0.0}).y();
  return window() != nullptr && top + height() > 0.0 && top < window()->height();
}

void MeterFill::paint(QPainter* painter) {
  const double length = width() * shown_;
  if (!(length > 0.0)) return;
  const double start = isMirrored_ ? width() : 0.0;
  const double end = isMirrored_ ? width() - length : length;
  QLinearGradient gradient(start, 0.0, end, 0.0);
  gradient.setStops({{0.0, low_}, {0.5, middle_}, {1.0, high_}});
  painter->setRenderHint(QPainter::Antialiasing);
  painter->setPen(Qt::NoPen);
  painter->setBrush(gradient);
  const double radius = std::min(height(), length) / 2.0;
  painter->drawRoundedRect(QRectF(std::min(start, end), 0.0, length, height()), radius, radius);
}

} // namespace sonvel
