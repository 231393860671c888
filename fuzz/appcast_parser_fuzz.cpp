#include "expect.h"
#include "updater/appcast_parser.h"
#include "updater/update_choice.h"

#include <cstdint>

namespace sonvel::updater {
namespace {

using fuzz::expect;

void expectBounded(const AppcastItem& item) {
  expect(item.length >= 0, "a length is none or positive");
  expect(item.signature.isEmpty() || item.signature.size() == 64, "a signature is none or whole");
  expect(item.notes.size() <= 16'384, "notes are short");
  expect(item.version.isEmpty() || !item.shortVersion.isEmpty(), "every version can be shown");
}

void expectOrdered(const AppcastItem& left, const AppcastItem& right) {
  const auto first = ProgramVersion::parse(left.version);
  const auto second = ProgramVersion::parse(right.version);
  if (first && second) expect((*first < *second) == (*second > *first), "versions have one order");
}

void expectGoodChoice(const Appcast& appcast) {
  const ProgramVersion installed = *ProgramVersion::parse(QStringLiteral("1.0"));
  const Choice choice =
      chooseUpdate(appcast, {.installed = installed, .allowedChannels = {"beta"}, .system = installed});
  if (!choice.item) return;
  const auto chosen = ProgramVersion::parse(choice.item->version);
  expect(chosen && *chosen > installed, "what is offered is newer");
  expect(choice.item->channel.isEmpty() || choice.item->channel == QLatin1String("beta"),
         "what is offered is for this build's channel");
}

void fuzzFeed(const QByteArray& feed) {
  const auto read = readAppcast(feed);
  const Appcast* appcast = std::get_if<Appcast>(&read);
  if (appcast == nullptr) return;
  expect(appcast->size() <= 1'000, "a feed is short");
  for (const AppcastItem& item : *appcast) {
    expectBounded(item);
    expectOrdered(appcast->front(), item);
  }
  expectGoodChoice(*appcast);
}

} // namespace
} // namespace sonvel::updater

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  sonvel::updater::fuzzFeed(QByteArray(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size)));
  return 0;
}
