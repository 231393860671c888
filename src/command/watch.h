#pragma once

#include "command/mixer_client.h"

#include <QByteArray>

namespace sonvel::command {

using Format = QByteArray (*)(const QVariantMap& properties);

/// Prints the mixer's properties as `format` has them, now and after each change, until the process is ended.
/// Throws Failure when the program that it watches ends.
[[noreturn]] void watchMixer(const MixerClient& mixer, Format format, bool hasLevels);

} // namespace sonvel::command
