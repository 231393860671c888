#pragma once

#include <QColor>
#include <QImage>
#include <QString>

namespace sonvel {

/// The symbol `name` (a file in svg/ without suffix) in one colour with its opacity, centred and as large as
/// fits in `sizeInPixels` (device pixels). Null, with a warning, if there is none of this name. Any thread.
QImage symbolImage(const QString& name, const QColor& color, QSize sizeInPixels);

} // namespace sonvel
