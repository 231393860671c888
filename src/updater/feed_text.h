#pragma once

#include <QString>

namespace sonvel::updater {

// Text from a feed, made fit to be shown. Without control characters and those that change the direction of
// writing, and never longer than said. Any thread.

/// One line of at most `maximumCharacters`; blanks and line ends in it become single spaces.
QString plainLine(const QString& text, qsizetype maximumCharacters);

/// The text of a release's description without its markup: paragraphs and breaks become lines, list items
/// begin with a bullet. At most 16,384 characters. The result is plain text and must be shown as such.
QString plainNotes(const QString& description);

} // namespace sonvel::updater
