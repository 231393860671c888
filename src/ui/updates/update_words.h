#pragma once

#include "platform/update_run.h"

#include <QLocale>
#include <QString>

namespace sonvel {

/// The texts of the window for one state.
struct UpdateWords {
  QString heading;
  QString detail;
  QString progressText;                          ///< beside the bar; empty without a count
  QString acceptLabel;                           ///< first button; empty: none
  QString dismissLabel;                          ///< second button; empty: none
  QString symbol = QStringLiteral("arrow.down"); ///< symbol name
  bool hasProgress = false;                      ///< show a progress bar
};

/// Sizes are formatted for `locale`. Any thread.
UpdateWords wordsOf(const UpdateState& state, const QLocale& locale);

/// One sentence: what failed, and what became of the update.
QString sentenceOf(UpdateFailure failure);

/// The downloaded fraction, 0 to 1; none if unknown.
std::optional<double> fractionOf(const UpdateState& state);

} // namespace sonvel
