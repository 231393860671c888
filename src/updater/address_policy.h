#pragma once

#include <QUrl>

namespace sonvel::updater {

/// Which addresses an updater may talk to.
enum class AddressPolicy {
  httpsOnly,
  httpsOrLocalhost, ///< http too, to the hosts "localhost" and "127.0.0.1": for a feed under development
};

/// The policy that a feed's own address stands for: an http feed was allowed for development.
AddressPolicy policyOfFeed(const QUrl& feed);

/// Any thread.
bool isAllowed(const QUrl& address, AddressPolicy policy);

} // namespace sonvel::updater
