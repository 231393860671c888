#include "expect.h"
#include "updater/appcast.h"
#include "updater/update_feed_configuration.h"

#include <QByteArray>
#include <array>
#include <cstdint>
#include <string_view>

namespace sonvel {
namespace {

using fuzz::expect;
using Text = std::optional<std::string>;

void check(const Text& feed, const Text& key, const Text& channel, bool allowsLocalhost) {
  using updater::AddressPolicy;
  const auto policy = allowsLocalhost ? AddressPolicy::httpsOrLocalhost : AddressPolicy::httpsOnly;
  try {
    const UpdateFeedConfiguration checked(feed, key, channel, allowsLocalhost);
    const std::string address = checked.feedURL.toEncoded().toStdString();
    expect(updater::isAllowed(QUrl(QString::fromStdString(address), QUrl::StrictMode), policy),
           "the updater may talk to the address that it gets");
    expect(QByteArray::fromBase64(QByteArray::fromStdString(checked.publicKey)).size() == 32,
           "a key has 32 bytes");
    expect(checked == UpdateFeedConfiguration(address, checked.publicKey,
                                              std::string(rawValue(checked.channel)), allowsLocalhost),
           "what passed once passes again");
  } catch (const UpdateConfigurationError& error) {
    expect(error.payload().empty() || feed || channel, "a failure carries what it is about");
  }
}

} // namespace
} // namespace sonvel

/// A byte whose lowest bit allows local hosts, then feed, key and channel with bars between them. A text that
/// the input ends before is absent.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  std::string_view rest(reinterpret_cast<const char*>(data + 1), size - 1);
  std::array<sonvel::Text, 3> texts;
  for (sonvel::Text& text : texts) {
    const std::size_t bar = rest.find('|');
    text = std::string(rest.substr(0, bar));
    if (bar == std::string_view::npos) break;
    rest.remove_prefix(bar + 1);
  }
  sonvel::check(texts[0], texts[1], texts[2], (data[0] & 1U) != 0);
  return 0;
}
