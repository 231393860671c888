#pragma once

#include <QColor>
#include <QImage>
#include <QString>

namespace sonvel {

/// The pictogram `name` (a file name in svg/ without its ending) in one colour, its opacity included, drawn
/// for just these device pixels: as large as `sizeInPixels` allows, in its middle. A null image, and a
/// warning, if there is none of this name. Any thread.
QImage symbolImage(const QString& name, const QColor& color, QSize sizeInPixels);

} // namespace sonvel
