#pragma once

#include "model/mixer_view_model.h"

#include <QList>
#include <QVariantMap>

namespace sonvel::remote {

/// The model's state as the interface's properties, in its D-Bus types. Main thread.
QVariantMap mixerProperties(const MixerViewModel& model, bool hasLevels);

/// Converts a fraction to a whole percentage.
int toPercent(double fraction);

} // namespace sonvel::remote
