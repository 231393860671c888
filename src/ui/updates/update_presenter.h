#pragma once

#include "platform/update_session.h"
#include "ui/updates/update_words.h"

#include <QObject>
#include <QtQml/qqmlregistration.h>

namespace sonvel {

/// A session as the window's views show it: words and numbers, and what the buttons do. Main thread.
class UpdatePresenter final : public QObject {
  Q_OBJECT
  QML_ELEMENT
  QML_UNCREATABLE("The window has its own.")
  Q_PROPERTY(QString heading READ heading NOTIFY changed)
  Q_PROPERTY(QString detail READ detail NOTIFY changed)
  Q_PROPERTY(QString notes READ notes NOTIFY changed)
  Q_PROPERTY(bool hasProgress READ hasProgress NOTIFY changed)
  Q_PROPERTY(bool isCounted READ isCounted NOTIFY changed)
  Q_PROPERTY(double fraction READ fraction NOTIFY changed)
  Q_PROPERTY(QString progressText READ progressText NOTIFY changed)
  Q_PROPERTY(QString acceptLabel READ acceptLabel NOTIFY changed)
  Q_PROPERTY(QString dismissLabel READ dismissLabel NOTIFY changed)
  Q_PROPERTY(bool hasDefault READ hasDefault NOTIFY changed)
  Q_PROPERTY(QString symbol READ symbol NOTIFY changed)
  Q_PROPERTY(bool hasFailed READ hasFailed NOTIFY changed)

 public:
  /// `session` lives longer.
  explicit UpdatePresenter(UpdateSession& session);

  /// Takes over what the session says now.
  void refresh();

  /// The first button: goes on, or closes where there is nothing to do but read.
  Q_INVOKABLE void accept();

  /// Return, wherever the focus is: the first button where it is the default one, else nothing.
  Q_INVOKABLE void acceptByDefault();

  /// The other button, Escape or the window's own close button.
  Q_INVOKABLE void dismiss();

  QString heading() const { return words_.heading; }

  QString detail() const { return words_.detail; }

  /// Only while the user decides about them.
  QString notes() const;

  bool hasProgress() const { return words_.hasProgress; }

  bool isCounted() const;

  double fraction() const;

  QString progressText() const { return words_.progressText; }

  QString acceptLabel() const { return words_.acceptLabel; }

  QString dismissLabel() const { return words_.dismissLabel; }

  /// Whether the first button is the default one: not in an update that nobody asked for.
  bool hasDefault() const { return !session_.state().isUnasked; }

  /// A name of the provider of symbols.
  QString symbol() const { return words_.symbol; }

  bool hasFailed() const { return session_.state().stage == UpdateStage::failed; }

 Q_SIGNALS:
  void changed();

 private:
  UpdateSession& session_;
  UpdateWords words_;
};

} // namespace sonvel
