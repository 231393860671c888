#pragma once

#include <QString>

namespace sonvel {

/// What a report of a fault needs to say: versions, what kind of desktop this is, what the sound server
/// holds, and the rows and last errors of the Sonvel that runs, if one does. The user's home is written as ~,
/// and no window's title or device's name is in it. Needs a QCoreApplication; blocks for some seconds at
/// most.
QString diagnosis();

} // namespace sonvel
