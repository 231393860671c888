#pragma once

#include "platform/update_run.h"

#include <QByteArray>
#include <QDateTime>
#include <QList>
#include <QString>
#include <QUrl>
#include <optional>

namespace sonvel::updater {

/// The addresses that an updater may use.
enum class AddressPolicy {
  httpsOnly,
  httpsOrLocalhost, ///< also http to "localhost" and "127.0.0.1", for a feed under development
};

/// The policy for all addresses in `feed`: an http feed was allowed for development.
AddressPolicy policyOfFeed(const QUrl& feed);

/// Any thread.
bool isAllowed(const QUrl& address, AddressPolicy policy);

/// A release in a feed. Texts are unchanged unless noted.
struct AppcastItem {
  QString version;              ///< for comparison
  QString shortVersion;         ///< for display: one clean line of at most 64 characters; never empty
  QString channel;              ///< empty: for everyone
  QString minimumSystemVersion; ///< empty: any
  QString architecture;         ///< as in "x86_64"
  QString notes;                ///< cleaned plain text
  QDateTime expires;            ///< invalid: as the feed
  QUrl address;                 ///< of the file
  qint64 length = 0;            ///< of the file, in bytes; 0 if missing or unusable
  QByteArray hash;              ///< SHA-256 of the file, 32 bytes; empty if missing or unusable
};

/// Why an item can't be offered to anyone; none if it can. Any thread.
std::optional<UpdateFailure> faultOf(const AppcastItem& item, AddressPolicy policy);

/// A parsed feed, for one program.
struct Appcast {
  QString product;
  qint64 counter = 0; ///< from 1; increases with every published feed
  QDateTime expires;
  QList<AppcastItem> items;
};

/// Parses a feed with a verified signature: RSS 2.0 as described in docs/updates.md. None if it is not such a
/// feed, lacks product, counter or expiry, has a document type, or exceeds a limit (1,000 items, depth 32,
/// texts of 64 KiB). Any thread.
std::optional<Appcast> readAppcast(const QByteArray& feed);

} // namespace sonvel::updater
