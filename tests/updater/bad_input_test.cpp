#include "updater/test_certificates.h"
#include "updater/updater_world.h"

#include <csignal>
#include <sys/resource.h>
#include <type_traits>

namespace sonvel::updater {
namespace {

using World = UpdaterWorld;
using Spoil = std::function<void(World&)>;

/// One thing that can be wrong, and what the user is told.
struct BadInput {
  const char* name;
  UpdateFailure failure;
  Spoil spoil;
  bool isOfFile = false; ///< happens when the update is already offered
};

Spoil text(const QByteArray& feed) {
  return [feed](World& world) { world.serveText(feed); };
}

/// With a good signature, so that it is read.
Spoil signedText(const QByteArray& feed) {
  return [feed](World& world) { world.serveText(signedFeed(feed, {world.key})); };
}

Spoil feed(const std::function<void(Feed&)>& change) {
  return [change](World& world) {
    Feed changed{.items = {world.item()}};
    change(changed);
    world.serve(changed);
  };
}

/// Another value in the feed.
template <typename Value> Spoil with(Value Feed::*member, const std::type_identity_t<Value>& value) {
  return feed([=](Feed& changed) { changed.*member = value; });
}

/// Another value in its item.
template <typename Value> Spoil with(Value FeedItem::*member, const std::type_identity_t<Value>& value) {
  return feed([=](Feed& changed) { changed.items[0].*member = value; });
}

Spoil answer(const char* path, const Answer& other) {
  return [path, other](World& world) { world.server().set(QLatin1String(path), other); };
}

Spoil redirect(const char* path, const char* target) {
  return answer(path, {.status = 302, .headers = QByteArray("Location: ") + target + "\r\n"});
}

/// After the user has been offered one feed, the server has another one.
Spoil afterwards(const Feed& first, const std::function<Feed(const World&)>& second) {
  return [first, second](World& world) {
    Feed offered = first;
    for (FeedItem& each : offered.items)
      each = world.item(qPrintable(each.version));
    world.serve(offered);
    world.advanceTo(UpdateStage::available);
    world.cycle().cancel();
    world.start();
    world.serve(second(world));
  };
}

const FeedItem kNewer{.version = QStringLiteral("1.2")};

std::vector<BadInput> badFeeds() {
  using enum UpdateFailure;
  const char* const path = "/appcast.xml";
  return {
      {"no network", noNetwork, [](World& world) { world.server().shutDown(); }},
      {"no feed there", serverRefused, answer(path, {.status = 404, .body = "no"})},
      {"broken server", serverRefused, answer(path, {.status = 503})},
      {"breaks off", interrupted, answer(path, {.body = "<rss>", .announcedLength = 50})},
      {"50 MB", feedTooLarge, text(QByteArray("<!-- more -->\n").repeated(3'600'000))},
      {"never ends", feedTooLarge,
       answer(path, {.body = QByteArray(10'000, ' '), .repeats = 1'000'000'000, .announcedLength = -1})},
      {"redirect to http", insecureRedirect, redirect(path, "http://updates.example/a")},
      {"redirect to a file", insecureRedirect, redirect(path, "file:///etc/passwd")},
      {"redirect to data", insecureRedirect, redirect(path, "data:text/xml,<rss/>")},
      {"redirect in a circle", tooManyRedirects, redirect(path, path)},

      {"empty", feedNotSigned, text("")},
      {"a page", feedNotSigned, text("<html><body>Log in to this network</body></html>")},
      {"no signature", feedNotSigned,
       [](World& world) { world.serveText(Feed{.items = {world.item()}}.xml()); }},
      {"signature of another key", feedNotSigned,
       [](World& world) { world.serveText(signedFeed(Feed{.items = {world.item()}}.xml(), {SecretKey()})); }},
      {"short signature", feedNotSigned, text("<rss/>\n<!-- sonvel-signature: c2hvcnQ= -->\n")},
      {"signature without an end", feedNotSigned, text("<!-- sonvel-signature: -->")},
      {"99.0 around an older program", feedNotSigned,
       [](World& world) {
         world.serveText(
             signedFeed(Feed{.items = {world.item("1.1")}}.xml(), {world.key}).replace(">1.1<", ">99.0<"));
       }},
      {"more after the signature", feedNotSigned,
       [](World& world) { world.serveText(signedFeed(Feed{}.xml(), {world.key}) + "<item/>"); }},
      {"one byte changed", feedNotSigned,
       [](World& world) { world.serveText(signedFeed(Feed{}.xml(), {world.key}).replace("rss", "Rss")); }},

      {"no XML", feedUnreadable, signedText("GIF89a")},
      {"two feeds", feedUnreadable, signedText("<rss></rss><rss></rss>")},
      {"deep", feedUnreadable, signedText("<rss>" + QByteArray("<a>").repeated(100'000))},
      {"long text", feedUnreadable, with(&Feed::more, "<a>" + QByteArray(70'000, 'x') + "</a>")},
      {"many items", feedUnreadable, with(&Feed::more, QByteArray("<item/>").repeated(2'000))},
      {"entity", feedUnreadable,
       signedText("<!DOCTYPE rss [<!ENTITY f SYSTEM \"file:///etc/passwd\">]><rss>&f;</rss>")},
      {"no counter", feedUnreadable, with(&Feed::counter, 0)},
      {"no expiry", feedUnreadable, with(&Feed::expires, "")},
      {"expiry without a zone", feedUnreadable, with(&Feed::expires, "2030-01-01T00:00:00")},
      {"item with an unreadable expiry", feedUnreadable,
       with(&FeedItem::more, "<sonvel:expires>never</sonvel:expires>")},
      {"another program's", feedOfOtherProgram, with(&Feed::product, "com.example.other")},
      {"expired", feedExpired, with(&Feed::expires, "2027-01-15T00:00:00Z")},
      {"item expired", feedExpired,
       with(&FeedItem::more, "<sonvel:expires>2026-12-31T00:00:00Z</sonvel:expires>")},
      {"replay", feedOlderThanSeen,
       afterwards({.items = {kNewer}, .counter = 11},
                  [](const World&) { return Feed{}; })}, // would say that there is nothing newer
      {"downgrade", feedOlderThanSeen,
       afterwards({.items = {kNewer}},
                  [](const World& world) { return Feed{.items = {world.item()}, .counter = 12}; })},

      {"http enclosure", insecureDownload, with(&FeedItem::address, "http://updates.example/update")},
      {"file enclosure", insecureDownload, with(&FeedItem::address, "file:///bin/sh")},
      {"relative enclosure", insecureDownload, with(&FeedItem::address, "update")},
      {"no enclosure", insecureDownload, with(&FeedItem::address, "")},
      {"no version", incompleteOffer, with(&FeedItem::version, {})},
      {"version of two lines", incompleteOffer, with(&FeedItem::version, "1.1\nSafe")},
      {"no architecture", incompleteOffer, with(&FeedItem::architecture, {})},
      {"no length", incompleteOffer, with(&FeedItem::length, 0)},
      {"negative length", incompleteOffer, with(&FeedItem::length, -1)},
      {"huge length", downloadTooLarge, with(&FeedItem::length, 10'000'000'000)},
      {"no hash", incompleteOffer, with(&FeedItem::hash, {})},
      {"short hash", incompleteOffer, with(&FeedItem::hash, QByteArray(63, 'a'))},
      {"hash that is none", incompleteOffer, with(&FeedItem::hash, QByteArray(64, 'x'))},
  };
}

std::vector<BadInput> badFiles() {
  using enum UpdateFailure;
  const char* const path = "/update";
  const auto file = [](const std::function<QByteArray(QByteArray)>& change) {
    return [change](World& world) { world.serveFile(change(world.newFile)); };
  };
  return {
      {"file gone", serverRefused, answer(path, {.status = 404}), true},
      {"file at http", insecureRedirect, redirect(path, "http://updates.example/update"), true},
      {"file on this disk", insecureRedirect, redirect(path, "file:///bin/sh"), true},
      {"shorter file", wrongLength, file([](QByteArray content) { return content.chopped(1); }), true},
      {"longer file", wrongLength, file([](QByteArray content) { return content + 'x'; }), true},
      {"endless file", wrongLength, answer(path, {.body = "xx", .repeats = 1'000'000, .announcedLength = -1}),
       true},
      {"file that breaks off", interrupted, answer(path, {.body = "part", .announcedLength = 100}), true},
      {"another file", wrongContent, file([](QByteArray content) { return content.replace(0, 1, "x"); }),
       true},
  };
}

void expectTold(const BadInput& bad, const QSslConfiguration& security) {
  SCOPED_TRACE(bad.name);
  World world(security);
  if (bad.isOfFile) world.advanceTo(UpdateStage::available);
  bad.spoil(world);
  bad.isOfFile ? world.cycle().proceed() : world.cycle().check(UpdateCycle::Asker::user);
  world.expectFailure(bad.failure);
  if (bad.failure == UpdateFailure::noNetwork) return;
  Feed good{.items = {world.item("1.3")}, .counter = 20};
  world.serve(good);
  world.cycle().proceed();
  EXPECT_TRUE(world.waitFor(UpdateStage::available)) << "the next check must work";
}

TEST(BadInput, endsInOneSentenceWithNothingInstalled) {
  for (const auto& table : {badFeeds(), badFiles()})
    for (const BadInput& bad : table)
      expectTold(bad, testCertificates().trusted());
}

TEST(BadInput, endsBeforeAnythingIsReadFromAnUnknownServer) {
  for (const QSslConfiguration& security : {testCertificates().untrusted(), testCertificates().otherHost()}) {
    World world(security);
    world.cycle().check(UpdateCycle::Asker::user);
    world.expectFailure(UpdateFailure::insecureConnection);
    EXPECT_EQ(world.checks(), 0);
  }
}

TEST(BadInput, isNoBetterWhereTheFeedIsLocal) {
  for (const char* other : {"http://updates.example/update", "http://[::1]:1/update", "file:///bin/sh"}) {
    World world;
    with(&FeedItem::address, QLatin1String(other))(world);
    world.cycle().check(UpdateCycle::Asker::user);
    world.expectFailure(UpdateFailure::insecureDownload);
  }
}

TEST(BadInput, isGivenUpWhenItStopsComing) {
  for (const char* path : {"/appcast.xml", "/update"}) {
    World world;
    answer(path, {.body = "part", .announcedLength = 100, .ending = Answer::Ending::keptOpen})(world);
    world.cycle().check(UpdateCycle::Asker::user);
    ASSERT_TRUE(waitUntil([&] {
      if (world.state().stage == UpdateStage::available) world.cycle().proceed();
      return world.server().requestCount(QLatin1String(path)) == 1;
    }));
    world.clock.advance(std::chrono::seconds(31));
    world.expectFailure(UpdateFailure::tooSlow);
  }
}

/// No file may grow over a size while this exists.
class FileSizeLimit {
 public:
  explicit FileSizeLimit(rlim_t bytes) {
    std::signal(SIGXFSZ, SIG_IGN);
    getrlimit(RLIMIT_FSIZE, &old_);
    const rlimit limit{bytes, old_.rlim_max};
    setrlimit(RLIMIT_FSIZE, &limit);
  }

  ~FileSizeLimit() { setrlimit(RLIMIT_FSIZE, &old_); }

  FileSizeLimit(const FileSizeLimit&) = delete;
  FileSizeLimit& operator=(const FileSizeLimit&) = delete;

 private:
  rlimit old_{};
};

TEST(BadInput, isAsFullADisk) {
  for (const UpdateStage stage : {UpdateStage::available, UpdateStage::ready}) {
    World world;
    world.advanceTo(stage);
    const FileSizeLimit limit(100'000);
    world.cycle().proceed();
    world.expectFailure(UpdateFailure::noSpace);
  }
}

} // namespace
} // namespace sonvel::updater
