#pragma once

#include <QStringList>

namespace sonvel::command {

/// Whether these words, starting with the program's name, are a command for the running Sonvel instead of a
/// start of the program.
bool isAsked(const QStringList& words);

/// Runs the command and returns the exit code; errors go to standard error. Needs a QCoreApplication but no
/// display.
int run(const QStringList& words);

/// The commands' part of --help.
QString summary();

} // namespace sonvel::command
