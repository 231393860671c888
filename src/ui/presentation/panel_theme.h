#pragma once

#include "ui/colors/panel_colors.h"

#include <QFont>
#include <QObject>
#include <QtQml/qqmlregistration.h>

class QJSEngine;
class QQmlEngine;

namespace sonvel {

/// The panel's colours, fonts and animation settings; follows the desktop's settings and the application's
/// palette and font. QML reaches it as the singleton PanelTheme of each engine in which it is installed. Main
/// thread.
class PanelTheme final : public QObject {
  Q_OBJECT
  QML_ELEMENT
  QML_SINGLETON
  Q_PROPERTY(QColor window READ window NOTIFY colorsChanged)
  Q_PROPERTY(QColor primary READ primary NOTIFY colorsChanged)
  Q_PROPERTY(QColor secondary READ secondary NOTIFY colorsChanged)
  Q_PROPERTY(QColor tertiary READ tertiary NOTIFY colorsChanged)
  Q_PROPERTY(QColor disabled READ disabled NOTIFY colorsChanged)
  Q_PROPERTY(QColor accent READ accent NOTIFY colorsChanged)
  Q_PROPERTY(QColor tint READ tint NOTIFY colorsChanged)
  Q_PROPERTY(QColor onAccent READ onAccent NOTIFY colorsChanged)
  Q_PROPERTY(QColor prominent READ prominent NOTIFY colorsChanged)
  Q_PROPERTY(QColor separator READ separator NOTIFY colorsChanged)
  Q_PROPERTY(QColor fill READ fill NOTIFY colorsChanged)
  Q_PROPERTY(QColor control READ control NOTIFY colorsChanged)
  Q_PROPERTY(QColor groove READ groove NOTIFY colorsChanged)
  Q_PROPERTY(QColor handle READ handle NOTIFY colorsChanged)
  Q_PROPERTY(QColor menu READ menu NOTIFY colorsChanged)
  Q_PROPERTY(QColor orange READ orange NOTIFY colorsChanged)
  Q_PROPERTY(QColor red READ red NOTIFY colorsChanged)
  Q_PROPERTY(QColor green READ green NOTIFY colorsChanged)
  Q_PROPERTY(QColor yellow READ yellow NOTIFY colorsChanged)
  Q_PROPERTY(QFont body READ body NOTIFY fontsChanged)
  Q_PROPERTY(QFont headline READ headline NOTIFY fontsChanged)
  Q_PROPERTY(QFont caption READ caption NOTIFY fontsChanged)
  Q_PROPERTY(QFont caption2 READ caption2 NOTIFY fontsChanged)
  Q_PROPERTY(QFont sectionLabel READ sectionLabel NOTIFY fontsChanged)
  Q_PROPERTY(QFont badge READ badge NOTIFY fontsChanged)
  Q_PROPERTY(QFont digits READ digits NOTIFY fontsChanged)
  Q_PROPERTY(bool animates READ animates NOTIFY animatesChanged)

 public:
  /// `appearance` outlives this object, which is its only listener.
  explicit PanelTheme(DesktopAppearance& appearance);
  ~PanelTheme() override;
  PanelTheme(const PanelTheme&) = delete;
  PanelTheme& operator=(const PanelTheme&) = delete;

  /// Call before `engine` creates a view; this object outlives `engine`.
  void install(QQmlEngine& engine);

  /// Called by the engine; null in an engine without a theme.
  static PanelTheme* create(QQmlEngine* engine, QJSEngine*);

  QColor window() const { return colors_.window; }

  QColor primary() const { return colors_.primary; }

  QColor secondary() const { return colors_.secondary; }

  QColor tertiary() const { return colors_.tertiary; }

  QColor disabled() const { return colors_.disabled; }

  QColor accent() const { return colors_.accent; }

  QColor tint() const { return colors_.tint; }

  QColor onAccent() const { return colors_.onAccent; }

  QColor prominent() const { return colors_.prominent; }

  QColor separator() const { return colors_.separator; }

  QColor fill() const { return colors_.fill; }

  QColor control() const { return colors_.control; }

  QColor groove() const { return colors_.groove; }

  QColor handle() const { return colors_.handle; }

  QColor menu() const { return colors_.menu; }

  QColor orange() const { return colors_.orange; }

  QColor red() const { return colors_.red; }

  QColor green() const { return colors_.green; }

  QColor yellow() const { return colors_.yellow; }

  // Fonts of 13, 13 semibold, 10, 10, 11 semibold, 9 semibold and 10 monospaced pixels at the default desktop
  // font size, scaled with it.

  QFont body() const { return font(13, QFont::Normal); }

  QFont headline() const { return font(13, QFont::DemiBold); }

  QFont caption() const { return font(10, QFont::Normal); }

  QFont caption2() const { return font(10, QFont::Normal); }

  QFont sectionLabel() const;

  QFont badge() const { return font(9, QFont::DemiBold); }

  QFont digits() const;

  /// Whether animations are allowed.
  bool animates() const noexcept { return animates_; }

 Q_SIGNALS:
  void colorsChanged();
  void fontsChanged();
  void animatesChanged();

 private:
  bool eventFilter(QObject* watched, QEvent* event) override;
  void updateAppearance();
  void updateFonts();
  QFont font(double pixelSize, QFont::Weight weight) const;
  QFont sized(QFont font, double pixelSize) const;
  int scaled(double pixelSize) const;

  DesktopAppearance& appearance_;
  PanelColors colors_;
  QFont generalFont_;
  double fontScale_ = 1.0;
  bool animates_ = true;
};

} // namespace sonvel
