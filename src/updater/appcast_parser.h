#pragma once

#include "updater/appcast.h"

#include <QByteArray>
#include <variant>

namespace sonvel::updater {

/// What keeps a feed from being read.
enum class AppcastFault { notXml, notFeed, documentType, tooLarge };

/// Reads a whole feed: RSS whose items carry `sparkle:version`, `sparkle:shortVersionString`,
/// `sparkle:channel`, `sparkle:minimumSystemVersion`, a description and an enclosure with url, length and
/// `sparkle:edSignature`. The two versions may stand on the enclosure as well. A feed with a document type is
/// refused, and with it every entity but XML's own five; so is one with more than 1,000 items. Any thread.
std::variant<Appcast, AppcastFault> readAppcast(const QByteArray& feed);

} // namespace sonvel::updater
