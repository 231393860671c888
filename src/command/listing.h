#pragma once

#include <QByteArray>
#include <QVariantMap>

namespace sonvel::command {

/// The mixer's properties as one line of JSON; docs/command-line.md has its fields.
QByteArray toJson(const QVariantMap& properties);

/// The same for a reader: the output first, then a line for each application.
QByteArray toTable(const QVariantMap& properties);

/// Writes it to standard output at once.
void print(const QByteArray& text);

} // namespace sonvel::command
