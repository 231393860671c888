#pragma once

#include <QByteArray>
#include <QVariantMap>

namespace sonvel::command {

/// The mixer's properties as one line of JSON; its fields are in docs/command-line.md.
QByteArray toJson(const QVariantMap& properties);

/// The same as a table for people: the output first, then one line per application.
QByteArray toTable(const QVariantMap& properties);

/// Writes to standard output and flushes.
void print(const QByteArray& text);

} // namespace sonvel::command
