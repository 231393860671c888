#include "ui/presentation/panel_theme.h"

#include <QEvent>
#include <QFontDatabase>
#include <QFontInfo>
#include <QGuiApplication>
#include <QQmlEngine>
#include <algorithm>
#include <cmath>
#include <utility>

namespace sonvel {
namespace {

/// The engine property that holds its theme.
constexpr const char* kThemeProperty = "sonvelPanelTheme";

/// The size of a 10-point desktop font, for which the panel's sizes are designed.
constexpr double kUsualPixelSize = 40.0 / 3.0;

// Outside this range the panel's width would not fit.
constexpr double kSmallestScale = 0.85;
constexpr double kLargestScale = 1.5;

constexpr double kSectionLabelTracking = 0.6;

} // namespace

PanelTheme::PanelTheme(DesktopAppearance& appearance)
    : appearance_(appearance) {
  updateAppearance();
  updateFonts();
  appearance_.onChange([this] { updateAppearance(); });
  qGuiApp->installEventFilter(this);
}

PanelTheme::~PanelTheme() {
  appearance_.onChange(nullptr);
}

void PanelTheme::install(QQmlEngine& engine) {
  QQmlEngine::setObjectOwnership(this, QQmlEngine::CppOwnership);
  engine.setProperty(kThemeProperty, QVariant::fromValue(this));
}

PanelTheme* PanelTheme::create(QQmlEngine* engine, QJSEngine*) {
  return engine->property(kThemeProperty).value<PanelTheme*>();
}

bool PanelTheme::eventFilter(QObject* watched, QEvent* event) {
  if (watched == qGuiApp) {
    if (event->type() == QEvent::ApplicationPaletteChange) updateAppearance();
    if (event->type() == QEvent::ApplicationFontChange) updateFonts();
  }
  return QObject::eventFilter(watched, event);
}

void PanelTheme::updateAppearance() {
  const auto appearance = appearance_.current();
  const auto colors = panelColors(appearance, QGuiApplication::palette());
  if (std::exchange(colors_, colors) != colors) Q_EMIT colorsChanged();
  const bool animates = !appearance.prefersReducedMotion;
  if (std::exchange(animates_, animates) != animates) Q_EMIT animatesChanged();
}

void PanelTheme::updateFonts() {
  generalFont_ = QGuiApplication::font();
  fontScale_ =
      std::clamp(QFontInfo(generalFont_).pixelSize() / kUsualPixelSize, kSmallestScale, kLargestScale);
  Q_EMIT fontsChanged();
}

QFont PanelTheme::sectionLabel() const {
  QFont label = font(11, QFont::DemiBold);
  label.setLetterSpacing(QFont::AbsoluteSpacing, kSectionLabelTracking);
  return label;
}

QFont PanelTheme::digits() const {
  return sized(QFontDatabase::systemFont(QFontDatabase::FixedFont), 10);
}

QFont PanelTheme::font(double pixelSize, QFont::Weight weight) const {
  QFont font = sized(generalFont_, pixelSize);
  font.setWeight(weight);
  return font;
}

// Where Wayland scales a screen, Qt's software renderer cuts each text to the bounds that its letters have
// when hinted at the unscaled size. Scaled letters can be higher than that, so they must not be hinted; Qt
// does the same where it scales by itself.
QFont PanelTheme::sized(QFont font, double pixelSize) const {
  font.setPixelSize(scaled(pixelSize));
  if (qGuiApp->devicePixelRatio() > 1) font.setHintingPreference(QFont::PreferNoHinting);
  return font;
}

int PanelTheme::scaled(double pixelSize) const {
  return static_cast<int>(std::lround(pixelSize * fontScale_));
}

} // namespace sonvel
