#pragma once

#include "platform/update_session.h"

#include <QByteArray>
#include <QDateTime>
#include <QList>
#include <QString>
#include <QUrl>
#include <optional>

namespace sonvel::updater {

/// Which addresses an updater may use.
enum class AddressPolicy {
  httpsOnly,
  httpsOrLocalhost, ///< http too, to the hosts "localhost" and "127.0.0.1": for a feed under development
};

/// The policy for everything that `feed` leads to: an http feed was allowed for development.
AddressPolicy policyOfFeed(const QUrl& feed);

/// Any thread.
bool isAllowed(const QUrl& address, AddressPolicy policy);

/// One release that a feed offers. Texts are those of the feed unless it says otherwise here.
struct AppcastItem {
  QString version;              ///< is compared
  QString shortVersion;         ///< is shown: one clean line of at most 64 characters; never empty
  QString channel;              ///< empty: for everyone
  QString minimumSystemVersion; ///< empty: any
  QString architecture;         ///< as in "x86_64"
  QString notes;                ///< clean plain text
  QDateTime expires;            ///< invalid: as the feed
  QUrl address;                 ///< of the file
  qint64 length = 0;            ///< of the file, in bytes; 0 if the feed gives none that is usable
  QByteArray hash; ///< SHA-256 of the file, 32 bytes; empty if the feed gives none that is usable
};

/// Why an item can't be offered to anyone; none if it can. Any thread.
std::optional<UpdateFailure> faultOf(const AppcastItem& item, AddressPolicy policy);

/// A feed, for one program.
struct Appcast {
  QString product;
  qint64 counter = 0; ///< from 1; grows with every feed that is published
  QDateTime expires;
  QList<AppcastItem> items;
};

/// Reads a feed whose signature is verified: RSS 2.0, as docs/updates.md describes it. None if it is no such
/// feed, lacks product, counter or expiry, has a document type, or is over a limit (1,000 items, a depth of
/// 32, texts of 64 KiB). Any thread.
std::optional<Appcast> readAppcast(const QByteArray& feed);

} // namespace sonvel::updater
