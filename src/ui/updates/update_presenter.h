#pragma once

#include "platform/update_run.h"
#include "ui/updates/update_words.h"

#include <QObject>
#include <QtQml/qqmlregistration.h>

namespace sonvel {

/// Presents an update run to the window's views: texts, numbers and button actions. Main thread.
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
  /// `run` outlives this object.
  explicit UpdatePresenter(UpdateRun& run);

  /// Reads the run's current state.
  void refresh();

  /// First button: proceeds, or closes if there is nothing to proceed with.
  Q_INVOKABLE void accept();

  /// Return key, wherever the focus is: presses the first button if it is the default one.
  Q_INVOKABLE void acceptByDefault();

  /// Second button, Escape or the window's close button.
  Q_INVOKABLE void dismiss();

  QString heading() const { return words_.heading; }

  QString detail() const { return words_.detail; }

  /// Only while the user has to decide about the update.
  QString notes() const;

  bool hasProgress() const { return words_.hasProgress; }

  bool isCounted() const;

  double fraction() const;

  QString progressText() const { return words_.progressText; }

  QString acceptLabel() const { return words_.acceptLabel; }

  QString dismissLabel() const { return words_.dismissLabel; }

  /// Whether the first button is the default one: not if the user did not ask for the update.
  bool hasDefault() const { return !run_.state().isUnasked; }

  /// A symbol name for the image provider.
  QString symbol() const { return words_.symbol; }

  bool hasFailed() const { return run_.state().stage == UpdateStage::failed; }

 Q_SIGNALS:
  void changed();

 private:
  UpdateRun& run_;
  UpdateWords words_;
};

} // namespace sonvel
