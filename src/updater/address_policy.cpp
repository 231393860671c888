#include "updater/address_policy.h"

namespace sonvel::updater {

AddressPolicy policyOfFeed(const QUrl& feed) {
  return feed.scheme() == QLatin1String("http") ? AddressPolicy::httpsOrLocalhost : AddressPolicy::httpsOnly;
}

bool isAllowed(const QUrl& address, AddressPolicy policy) {
  if (!address.isValid() || address.host().isEmpty()) return false;
  if (address.scheme() == QLatin1String("https")) return true;
  return policy == AddressPolicy::httpsOrLocalhost && address.scheme() == QLatin1String("http") &&
         (address.host() == QLatin1String("localhost") || address.host() == QLatin1String("127.0.0.1"));
}

} // namespace sonvel::updater
