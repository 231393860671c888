#pragma once

#include <QByteArray>
#include <QList>
#include <QString>
#include <QUrl>

namespace sonvel::updater {

/// One release that a feed offers, as the feed has it: nothing here is checked.
struct AppcastItem {
  QString version;              ///< what is compared
  QString shortVersion;         ///< what people read; `version` where the feed gives none
  QString channel;              ///< empty: for everyone
  QString minimumSystemVersion; ///< empty: any
  QString notes;                ///< plain text
  QUrl address;                 ///< of the file
  qint64 length = 0;            ///< of the file, in bytes; 0 if the feed gives none that is usable
  QByteArray signature;         ///< Ed25519 over the whole file; empty if the feed gives none of 64 bytes
};

using Appcast = QList<AppcastItem>;

} // namespace sonvel::updater
