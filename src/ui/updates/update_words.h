#pragma once

#include "platform/update_session.h"

#include <QLocale>
#include <QString>

namespace sonvel {

/// What the window says of an update.
struct UpdateWords {
  QString heading;
  QString detail;
  QString progressText;                          ///< beside the bar; empty where nothing is counted
  QString acceptLabel;                           ///< of the first button; empty: there is none
  QString dismissLabel;                          ///< of the other button; empty: there is none
  QString symbol = QStringLiteral("arrow.down"); ///< the name of the picture beside the words
  bool hasProgress = false;                      ///< something is going on
};

/// Sizes stand as `locale` writes them. Any thread.
UpdateWords wordsOf(const UpdateState& state, const QLocale& locale);

/// One sentence that says what went wrong, and what became of the update.
QString sentenceOf(UpdateFailure failure);

/// How much of the download is there, from 0 to 1; none where nothing is counted.
std::optional<double> fractionOf(const UpdateState& state);

} // namespace sonvel
