#pragma once

#include <QString>

namespace sonvel {

/// The text of sonvel --diagnose: versions, the kind of desktop, the contents of the sound server, and the
/// rows and last errors of the running Sonvel. Writes the user's home as ~; contains no window titles and no
/// device names. Needs a QCoreApplication; blocks for some seconds at most.
QString diagnosis();

} // namespace sonvel
