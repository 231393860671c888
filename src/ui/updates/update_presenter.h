#pragma once

#include "platform/update_session.h"
#include "ui/colors/panel_colors.h"
#include "ui/updates/update_words.h"

#include <QObject>
#include <QUrl>
#include <QtQml/qqmlregistration.h>

namespace sonvel {

/// A session as the window's views show it: words, numbers and colours, and what its buttons do. Main thread.
class UpdatePresenter final : public QObject {
  Q_OBJECT
  QML_ELEMENT
  QML_UNCREATABLE("The window has the one there is.")
  Q_PROPERTY(QString heading READ heading NOTIFY changed)
  Q_PROPERTY(QString detail READ detail NOTIFY changed)
  Q_PROPERTY(QString notes READ notes NOTIFY changed)
  Q_PROPERTY(bool hasProgress READ hasProgress NOTIFY changed)
  Q_PROPERTY(bool isCounted READ isCounted NOTIFY changed)
  Q_PROPERTY(double fraction READ fraction NOTIFY changed)
  Q_PROPERTY(QString progressText READ progressText NOTIFY changed)
  Q_PROPERTY(QString acceptLabel READ acceptLabel NOTIFY changed)
  Q_PROPERTY(QString dismissLabel READ dismissLabel NOTIFY changed)
  Q_PROPERTY(QUrl symbol READ symbol NOTIFY changed)
  Q_PROPERTY(QColor symbolColor READ symbolColor NOTIFY changed)
  Q_PROPERTY(bool animates READ animates CONSTANT)
  Q_PROPERTY(QColor windowColor READ windowColor CONSTANT)
  Q_PROPERTY(QColor wellColor READ wellColor CONSTANT)
  Q_PROPERTY(QColor primary READ primary CONSTANT)
  Q_PROPERTY(QColor secondary READ secondary CONSTANT)
  Q_PROPERTY(QColor separator READ separator CONSTANT)
  Q_PROPERTY(QColor control READ control CONSTANT)
  Q_PROPERTY(QColor accent READ accent CONSTANT)
  Q_PROPERTY(QColor onAccent READ onAccent CONSTANT)
  Q_PROPERTY(QColor groove READ groove CONSTANT)

 public:
  /// `session` lives longer. The appearance is that of the whole life.
  UpdatePresenter(UpdateSession& session, const Appearance& appearance);

  /// Takes over what the session says now.
  void refresh();

  /// The default button, or Return: goes on, or closes where there is nothing left to do but read.
  Q_INVOKABLE void accept();

  /// The other button, Escape or the window's own close button.
  Q_INVOKABLE void dismiss();

  QString heading() const { return words_.heading; }

  QString detail() const { return words_.detail; }

  /// Only while the user decides on them.
  QString notes() const;

  bool hasProgress() const { return words_.hasProgress; }

  bool isCounted() const;

  double fraction() const;

  QString progressText() const { return words_.progressText; }

  QString acceptLabel() const { return words_.acceptLabel; }

  QString dismissLabel() const { return words_.dismissLabel; }

  /// A picture of the provider of symbols, white.
  QUrl symbol() const;

  /// Behind it.
  QColor symbolColor() const;

  bool animates() const noexcept { return animates_; }

  QColor windowColor() const { return colors_.window; }

  QColor wellColor() const { return colors_.menu; }

  QColor primary() const { return colors_.primary; }

  QColor secondary() const { return colors_.secondary; }

  QColor separator() const { return colors_.separator; }

  QColor control() const { return colors_.control; }

  QColor accent() const { return colors_.prominent; }

  QColor onAccent() const { return colors_.onAccent; }

  QColor groove() const { return colors_.groove; }

 Q_SIGNALS:
  void changed();

 private:
  UpdateSession& session_;
  PanelColors colors_;
  UpdateWords words_;
  bool animates_;
};

} // namespace sonvel
