#include "updater/updater_world.h"

#include <csignal>
#include <sys/resource.h>

namespace sonvel::updater {
namespace {

using World = UpdaterWorld;
using Spoil = std::function<void(World&)>;
using enum Answer::Ending;
using enum UpdateFailure;

/// A possible defect, and what the user is told.
struct BadInput {
  const char* name;
  UpdateFailure failure;
  Spoil spoil;
  bool isOfFile = false; ///< takes effect after the file was offered
};

constexpr auto kFeed = "/appcast.xml";
constexpr auto kFile = "/update";

Spoil answer(const char* path, const Answer& other) {
  return [=](World& world) { world.server.set(path, other); };
}

Spoil text(const QByteArray& feed) {
  return answer(kFeed, {.body = feed});
}

/// Correctly signed, so that it is parsed.
Spoil signedText(const QByteArray& feed) {
  return [feed](World& world) { world.serveText(world.signedFeed(feed)); };
}

/// The good feed with a text replaced, then signed.
Spoil edited(const QByteArray& before, const QByteArray& after) {
  return [=](World& world) {
    QByteArray feed = world.feed(world.item());
    const qsizetype place = feed.indexOf(before);
    ASSERT_GE(place, 0) << before.constData();
    world.serveText(world.signedFeed(feed.replace(place, before.size(), after)));
  };
}

/// Other elements in the feed's item.
Spoil withElements(const QByteArray& elements) {
  return edited("<description>", elements + "<description>");
}

/// The good feed with a text replaced after signing.
Spoil forged(const QByteArray& before, const QByteArray& after) {
  return [=](World& world) {
    world.serveText(world.signedFeed(world.feed(world.item())).replace(before, after));
  };
}

Spoil redirect(const char* path, const char* target) {
  return [=](World& world) { world.server.redirect(path, target); };
}

Spoil file(const QByteArray& content) {
  return answer(kFile, {.body = content});
}

const BadInput kBadInputs[] = {
    {"no network", noNetwork, [](World& world) { world.server.shutDown(); }},
    {"broken server", serverRefused, answer(kFeed, {.status = 503})},
    {"breaks off", interrupted, answer(kFeed, {.headers = "Content-Length: 50\r\n", .body = "<rss>"})},
    {"never ends", feedTooLarge, answer(kFeed, {.body = QByteArray(10'000, ' '), .ending = endless})},
    {"redirect to http", insecureRedirect, redirect(kFeed, "http://updates.example/a")},
    {"redirect in a circle", tooManyRedirects, redirect(kFeed, kFeed)},

    {"no signature", feedNotSigned, [](World& world) { world.serveText(world.feed(world.item())); }},
    {"signature of another key", feedNotSigned,
     [](World& world) { world.serveText(signing::signedFeed(world.feed(world.item()), {SecretKey()})); }},
    {"short signature", feedNotSigned, text("<rss/>\n<!-- sonvel-signature: c2hvcnQ= -->\n")},
    {"99.0 around an older program", feedNotSigned, forged(">1.1<", ">99.0<")},
    {"more after the signature", feedNotSigned, forged("-->\n", "-->\n<item/>")},

    {"no XML", feedUnreadable, signedText("GIF89a")},
    {"deep", feedUnreadable, signedText("<rss>" + QByteArray("<a>").repeated(100'000))},
    {"long text", feedUnreadable, withElements("<a>" + QByteArray(70'000, 'x') + "</a>")},
    {"many items", feedUnreadable, edited("<item>", QByteArray("<item/>").repeated(2'000) + "<item>")},
    {"entity", feedUnreadable,
     edited("<rss>", "<!DOCTYPE rss [<!ENTITY f SYSTEM \"file:///etc/passwd\">]><rss>&f;")},
    {"no counter", feedUnreadable, edited("counter>10", "counter>0")},
    {"expiry without a zone", feedUnreadable, edited("00:00:00Z", "00:00:00")},
    {"another program's", feedOfOtherProgram, edited("com.example.program", "com.example.other")},
    {"item expired", feedExpired, withElements("<sonvel:expires>2026-12-31T00:00:00Z</sonvel:expires>")},

    {"http enclosure", insecureDownload, edited("https:", "http:")},
    {"version of two lines", incompleteOffer, edited(">1.1<", ">1.1\nSafe<")},
    {"no architecture", incompleteOffer, edited("test-cpu", "")},
    {"negative length", incompleteOffer, edited(" length=\"", " length=\"-")},
    {"huge length", downloadTooLarge, edited(" length=\"", " length=\"10000")},
    {"no hash", incompleteOffer, edited("sonvel:sha256", "sonvel:sha512")},

    {"file at http", insecureRedirect, redirect(kFile, "http://updates.example/update"), true},
    {"shorter file", wrongLength, file(kNewFile.chopped(1)), true},
    {"longer file", wrongLength, file(kNewFile + 'x'), true},
    {"another file", wrongContent, file("x" + kNewFile.mid(1)), true},
};

TEST(BadInput, endsInOneSentenceWithNothingInstalled) {
  for (const BadInput& bad : kBadInputs) {
    SCOPED_TRACE(bad.name);
    World world;
    if (bad.isOfFile) world.advanceTo(UpdateStage::available);
    bad.spoil(world);
    world.proceed();
    world.expectFailure(bad.failure);
    if (bad.failure == noNetwork) continue;
    world.serve(world.item("1.3"), 20);
    world.proceed();
    EXPECT_TRUE(world.waitFor(UpdateStage::available)) << "the next check must work";
  }
}

TEST(BadInput, endsBeforeAnythingIsReadFromAnUnknownServer) {
  World world; // created before the configuration is read, because creating the certificate changes it
  const QSslConfiguration trusting = QSslConfiguration::defaultConfiguration();
  QSslConfiguration untrusting = trusting;
  untrusting.setCaCertificates({});
  for (const auto& [host, security] :
       {std::pair{"https://localhost", untrusting}, {"https://127.0.0.1", trusting}}) {
    QSslConfiguration::setDefaultConfiguration(security);
    world.server.host = host;
    world.start();
    world.proceed();
    world.expectFailure(insecureConnection);
  }
  EXPECT_EQ(world.checks(), 0);
}

TEST(BadInput, isNoBetterWhereTheFeedIsLocal) {
  World world(Installation::Kind::singleFile, false);
  for (const char* other : {"http://updates.example", "http://[::1]", "file://localhost"}) {
    edited("http://localhost", other)(world);
    world.proceed();
    world.expectFailure(insecureDownload);
  }
  world.serveGood();
  world.advanceTo(UpdateStage::ready);
}

TEST(BadInput, isGivenUpWhenItStopsComing) {
  for (const UpdateStage stage : {UpdateStage::idle, UpdateStage::available}) {
    World world;
    world.advanceTo(stage);
    const char* const path = stage == UpdateStage::idle ? kFeed : kFile;
    world.server.set(path, {.headers = "Content-Length: 100\r\n", .body = "part", .ending = keptOpen});
    world.proceed();
    ASSERT_TRUE(waitUntil([&] { return world.server.requestCount(path) > 0; }));
    world.clock.advance(std::chrono::seconds(31));
    world.expectFailure(tooSlow);
  }
}

TEST(BadInput, isAsFullADisk) {
  std::signal(SIGXFSZ, SIG_IGN);
  rlimit old{};
  getrlimit(RLIMIT_FSIZE, &old);
  const rlimit small{100'000, old.rlim_max};
  for (const UpdateStage stage : {UpdateStage::available, UpdateStage::ready}) {
    World world;
    world.advanceTo(stage);
    setrlimit(RLIMIT_FSIZE, &small);
    world.proceed();
    world.expectFailure(noSpace);
    setrlimit(RLIMIT_FSIZE, &old);
  }
}

} // namespace
} // namespace sonvel::updater
