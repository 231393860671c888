#pragma once

#include <QStringList>

namespace sonvel::command {

/// Whether these words, the program's name first, ask for a command that is told to the Sonvel that runs, and
/// not for a start of the program.
bool isAsked(const QStringList& words);

/// Carries the command out and returns the exit code; says on standard error what failed. Needs a
/// QCoreApplication, and nothing of a display.
int run(const QStringList& words);

/// What --help says of the commands.
QString summary();

} // namespace sonvel::command
