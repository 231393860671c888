#pragma once

#include "platform/update_session.h"
#include "updater/file_descriptor.h"

#include <QByteArray>
#include <filesystem>
#include <optional>

namespace sonvel::updater {

/// A new file for this user alone, open for writing. Not open, with errno set, if it can't be made or its
/// name is taken, even by a link. Any thread; may block.
FileDescriptor createFile(const std::filesystem::path& path);

/// Writes all of `bytes`. False with errno set. Any thread; may block.
bool writeAll(int descriptor, const QByteArray& bytes);

/// What an errno of writing means: diskFull where space is what was missing, `otherwise` for the rest.
UpdateFailure failureOfWriting(int error, UpdateFailure otherwise);

} // namespace sonvel::updater
