#pragma once

#include <QString>

namespace sonvel::updater {

// Makes text from a feed safe to show: no control characters, none that change the writing direction, and a
// maximum length. Any thread.

/// One line of at most `maximumCharacters`; whitespace becomes single spaces.
QString plainLine(const QString& text, qsizetype maximumCharacters);

/// The text of a release's description without markup: paragraphs and breaks become lines, list items start
/// with a bullet. At most 16,384 characters. The result must be shown as plain text.
QString plainNotes(const QString& description);

} // namespace sonvel::updater
