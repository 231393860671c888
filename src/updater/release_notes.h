#pragma once

#include <QString>

namespace sonvel::updater {

/// What a release's description says, without its markup: paragraphs and breaks become lines, list items
/// begin with a bullet. Never more than 16,384 characters. The result is plain text; whoever shows it must
/// show it as such. Any thread.
QString plainNotes(const QString& description);

} // namespace sonvel::updater
