#pragma once

#include <QColor>
#include <QQuickPaintedItem>
#include <QtQml/qqmlregistration.h>

namespace sonvel {

/// A disc with a sign in it: "arrow", "check" or "exclamation".
class UpdateSymbolView : public QQuickPaintedItem {
  Q_OBJECT
  QML_ELEMENT
  Q_PROPERTY(QString name MEMBER name_ WRITE setName REQUIRED)
  Q_PROPERTY(QColor color MEMBER color_ WRITE setColor REQUIRED)

 public:
  explicit UpdateSymbolView(QQuickItem* parent = nullptr);

  void paint(QPainter* painter) override;

  void setName(const QString& name);
  void setColor(const QColor& color);

 private:
  QString name_;
  QColor color_;
};

} // namespace sonvel
