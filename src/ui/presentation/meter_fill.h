#pragma once

#include <QAbstractAnimation>
#include <QColor>
#include <QQuickPaintedItem>

namespace sonvel {

/// The filled part of a meter: a capsule over a fraction of the item's width, with a gradient of three
/// colours. It rises fast and falls slowly between readings.
///
/// Drawn and animated here instead of in QML, because continuously moving meters cause most of the panel's
/// processor time. Main thread.
class MeterFill : public QQuickPaintedItem {
  Q_OBJECT
  QML_ELEMENT
  Q_PROPERTY(double level READ level WRITE setLevel NOTIFY levelChanged)
  Q_PROPERTY(double shown READ shown NOTIFY shownChanged)
  Q_PROPERTY(bool animates MEMBER animates_ NOTIFY animatesChanged)
  Q_PROPERTY(bool mirrored READ mirrored WRITE setMirrored NOTIFY mirroredChanged)
  Q_PROPERTY(QColor low READ low WRITE setLow NOTIFY colorsChanged)
  Q_PROPERTY(QColor middle READ middle WRITE setMiddle NOTIFY colorsChanged)
  Q_PROPERTY(QColor high READ high WRITE setHigh NOTIFY colorsChanged)

 public:
  explicit MeterFill(QQuickItem* parent = nullptr)
      : QQuickPaintedItem(parent) {}

  /// The last reading, 0 to 1; clamped.
  [[nodiscard]] double level() const noexcept { return level_; }

  void setLevel(double level);

  /// The fraction of the width that is filled now, while moving to the level.
  [[nodiscard]] double shown() const noexcept { return shown_; }

  /// Fills from the right.
  [[nodiscard]] bool mirrored() const noexcept { return isMirrored_; }

  void setMirrored(bool isMirrored);

  [[nodiscard]] QColor low() const { return low_; }

  void setLow(const QColor& color) { setColor(low_, color); }

  [[nodiscard]] QColor middle() const { return middle_; }

  void setMiddle(const QColor& color) { setColor(middle_, color); }

  [[nodiscard]] QColor high() const { return high_; }

  void setHigh(const QColor& color) { setColor(high_, color); }

  void paint(QPainter* painter) override;

 Q_SIGNALS:
  void levelChanged();
  void shownChanged();
  void animatesChanged();
  void mirroredChanged();
  void colorsChanged();

 private:
  /// The movement from `shown` to `level`.
  class Glide final : public QAbstractAnimation {
   public:
    explicit Glide(MeterFill& meter)
        : meter_(meter) {}

    void begin(int milliseconds);

    [[nodiscard]] int duration() const override { return milliseconds_; }

   private:
    void updateCurrentTime(int milliseconds) override;

    MeterFill& meter_;
    int milliseconds_ = 0;
    double from_ = 0.0;
  };

  void show(double fraction);
  void setColor(QColor& which, const QColor& color);
  [[nodiscard]] bool isInWindow() const;

  double level_ = 0.0;
  double shown_ = 0.0;
  bool animates_ = false;
  bool isMirrored_ = false;
  QColor low_;
  QColor middle_;
  QColor high_;
  Glide glide_{*this};
};

} // namespace sonvel
