#pragma once

#include "model/mixer_view_model.h"

#include <QList>
#include <QVariantMap>

namespace sonvel::remote {

/// What the model shows, by the names of the interface's properties, in its D-Bus types. Main thread.
QVariantMap mixerProperties(const MixerViewModel& model, bool hasLevels);

/// A fraction as a whole percentage.
int toPercent(double fraction);

} // namespace sonvel::remote
