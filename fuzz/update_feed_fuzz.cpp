#include "expect.h"
#include "updater/appcast.h"
#include "updater/feed_signature.h"

#include <cstdint>

namespace sonvel::updater {
namespace {

using fuzz::expect;

void expectClean(const QString& text, qsizetype longest, bool isOneLine) {
  expect(text.size() <= longest, "a text is short");
  for (const QChar character : text) {
    const QChar::Category category = character.category();
    expect(category != QChar::Other_Control || (character == QLatin1Char('\n') && !isOneLine),
           "a text has no control characters");
    expect(category != QChar::Other_Format || character == QChar(0x200C) || character == QChar(0x200D),
           "a text has no characters that turn it round");
  }
}

void fuzzFeed(const QByteArray& feed) {
  const QByteArray text = unsignedFeed(feed);
  expect(feed.startsWith(text), "what is signed is the beginning");
  expect(!verifiedFeed(feed, {}), "nothing is verified without a key");
  const auto appcast = readAppcast(text);
  if (!appcast) return;
  expect(appcast->counter > 0 && appcast->expires.isValid() && !appcast->product.isEmpty(),
         "a feed is complete");
  expect(appcast->items.size() <= 1'000, "a feed is short");
  for (const AppcastItem& item : appcast->items) {
    expect(item.length >= 0, "a length is none or positive");
    expect(item.hash.isEmpty() || item.hash.size() == 32, "a hash is none or whole");
    expectClean(item.shortVersion, 64, true);
    expectClean(item.notes, 16'384, false);
  }
}

} // namespace
} // namespace sonvel::updater

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  sonvel::updater::fuzzFeed(QByteArray(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size)));
  return 0;
}
