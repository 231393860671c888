#include "simulated/desktop.h"
#include "updater/sparkle_update_controller.h"
#include "updater/update_feed_configuration.h"

#include <gtest/gtest.h>

namespace sonvel {
namespace {

using Error = UpdateConfigurationError;
using Text = std::optional<std::string>;

const std::string kFeed = "https://updates.example/appcast.xml";
const std::string kKey = "AAECAwQFBgcICQoLDA0ODxAREhMUFRYXGBkaGxwdHh8=";

Text keyOf(std::size_t bytes) {
  return QByteArray(static_cast<qsizetype>(bytes), 'k').toBase64().toStdString();
}

std::optional<Error> errorOf(const Text& feed, const Text& key, const Text& channel, bool localhost) {
  try {
    const UpdateFeedConfiguration configuration(feed, key, channel, localhost);
    return std::nullopt;
  } catch (const Error& error) {
    return error;
  }
}

TEST(UpdateFeedConfiguration, acceptsSafeFeedsOnly) {
  struct Case {
    Text feed;
    bool localhost;
    std::optional<Error> error;
  };

  const auto invalid = [](const std::string& text) { return Error::invalidFeedURL(text); };
  const Case cases[] = {
      {std::nullopt, false, Error::missingFeedURL()},
      {" \t\r\n", true, Error::missingFeedURL()},
      {"\xC2\xA0", true, Error::missingFeedURL()},
      {"https://updates.example", false, std::nullopt},
      {"  https://updates.example:8443/a?b#c\n", false, std::nullopt},
      {"https://user@updates.example/", false, std::nullopt},
      {"https://[::1]:8443/a", false, std::nullopt},
      {"http://localhost:8080/a", false, invalid("http://localhost:8080/a")},
      {"http://localhost:8080/a", true, std::nullopt},
      {"http://localhost", true, std::nullopt},
      {"http://127.0.0.1:8080/a", false, invalid("http://127.0.0.1:8080/a")},
      {"http://127.0.0.1:8080/a", true, std::nullopt},
      {" http://updates.example/ ", true, invalid("http://updates.example/")},
      {"http://[::1]:8080/a", true, invalid("http://[::1]:8080/a")},
      {"http://127.0.0.2/", true, invalid("http://127.0.0.2/")},
      {"http://localhost.example/", true, invalid("http://localhost.example/")},
      {"http://localhost@updates.example/", true, invalid("http://localhost@updates.example/")},
      {"http://updates.example#@localhost/", true, invalid("http://updates.example#@localhost/")},
      {"http://updates.example?@localhost/", true, invalid("http://updates.example?@localhost/")},
      {"http://updates.example\\@localhost/", true, invalid("http://updates.example\\@localhost/")},
      {"http://LOCALHOST/", true, invalid("http://LOCALHOST/")},
      {"http://%6cocalhost/", true, invalid("http://%6cocalhost/")},
      {"HTTPS://updates.example/", true, invalid("HTTPS://updates.example/")},
      {"Http://localhost/", true, invalid("Http://localhost/")},
      {"ftp://localhost/", true, invalid("ftp://localhost/")},
      {"file:///tmp/appcast.xml", true, invalid("file:///tmp/appcast.xml")},
      {"https:///appcast.xml", false, invalid("https:///appcast.xml")},
      {"https://:443/", false, invalid("https://:443/")},
      {"https:updates.example", false, invalid("https:updates.example")},
      {"updates.example/appcast.xml", false, invalid("updates.example/appcast.xml")},
      {"https://updates.example/a b", false, invalid("https://updates.example/a b")},
      {"https://[::1/", false, invalid("https://[::1/")},
      {"https://updates.example/#a#b", false, invalid("https://updates.example/#a#b")},
      {"not an address", false, invalid("not an address")},
  };
  for (const Case& one : cases)
    EXPECT_EQ(errorOf(one.feed, kKey, std::nullopt, one.localhost), one.error)
        << one.feed.value_or("(none)") << (one.localhost ? " with" : " without") << " the flag";
}

TEST(UpdateFeedConfiguration, acceptsKeysOf32BytesOnly) {
  struct Case {
    Text key;
    std::optional<Error> error;
  };

  const Case cases[] = {
      {std::nullopt, Error::missingPublicKey()},
      {" \n", Error::missingPublicKey()},
      {keyOf(32), std::nullopt},
      {" " + *keyOf(32) + "\n", std::nullopt},
      {keyOf(31), Error::invalidPublicKey()},
      {keyOf(33), Error::invalidPublicKey()},
      {kKey.substr(0, 20) + "\n" + kKey.substr(20), Error::invalidPublicKey()},
      {kKey.substr(0, 20) + "    " + kKey.substr(20), Error::invalidPublicKey()},
      {kKey.substr(0, 43), Error::invalidPublicKey()},
      {kKey + "====", Error::invalidPublicKey()},
      {"_" + kKey.substr(1), Error::invalidPublicKey()},
      {"====", Error::invalidPublicKey()},
  };
  for (const Case& one : cases)
    EXPECT_EQ(errorOf(kFeed, one.key, std::nullopt, false), one.error) << one.key.value_or("(none)");
}

TEST(UpdateFeedConfiguration, knowsTwoChannels) {
  struct Case {
    Text channel;
    std::optional<UpdateChannel> expected;
    std::string refused;
  };

  const Case cases[] = {
      {std::nullopt, UpdateChannel::stable, ""},
      {"stable", UpdateChannel::stable, ""},
      {" BETA\n", UpdateChannel::beta, ""},
      {"Beta", UpdateChannel::beta, ""},
      {" Nightly ", std::nullopt, "nightly"},
      {"", std::nullopt, ""},
      {" \n", std::nullopt, ""},
  };
  for (const Case& one : cases) {
    if (one.expected)
      EXPECT_EQ(UpdateFeedConfiguration(kFeed, kKey, one.channel, false).channel, *one.expected);
    else
      EXPECT_EQ(errorOf(kFeed, kKey, one.channel, false), Error::invalidChannel(one.refused));
  }
}

TEST(UpdateFeedConfiguration, reportsTheFirstFailureAndKeepsTheTrimmedSettings) {
  EXPECT_EQ(errorOf("http://updates.example", "", "", true), Error::invalidFeedURL("http://updates.example"));
  EXPECT_EQ(errorOf(kFeed, "k", "", false), Error::invalidPublicKey());
  const UpdateFeedConfiguration configuration(" " + kFeed + "\n", "\n" + kKey + " ", "Beta", false);
  EXPECT_EQ(configuration.feedURL.toString().toStdString(), kFeed);
  EXPECT_EQ(configuration.publicKey, kKey);
  EXPECT_EQ(configuration, UpdateFeedConfiguration(kFeed, kKey, "beta", true));
  EXPECT_NE(configuration, UpdateFeedConfiguration(kFeed, kKey, "stable", true));
}

TEST(UpdateFeedConfiguration, readsABundleWhereValuesOfAnotherTypeCountAsAbsent) {
  using Bundle = simulated::SimulatedBundle;
  const std::string local = "http://localhost:8080/appcast.xml";
  const auto read = [](Bundle::Information information) {
    return UpdateFeedConfiguration::fromBundle(Bundle(std::nullopt, std::move(information)));
  };
  EXPECT_EQ(read({}), std::nullopt);
  EXPECT_EQ(read({{"SUFeedURL", kFeed}, {"SUPublicEDKey", true}}), std::nullopt);
  EXPECT_EQ(read({{"SUFeedURL", true}, {"SUPublicEDKey", kKey}}), std::nullopt);
  EXPECT_EQ(read({{"SUFeedURL", kFeed}, {"SUPublicEDKey", kKey}, {"AppUpdateChannel", true}}),
            UpdateFeedConfiguration(kFeed, kKey, "stable", false));
  EXPECT_EQ(read({{"SUFeedURL", local}, {"SUPublicEDKey", kKey}, {"AppUpdateAllowInsecureLocalhost", true}}),
            UpdateFeedConfiguration(local, kKey, std::nullopt, true));
  EXPECT_EQ(
      read({{"SUFeedURL", local}, {"SUPublicEDKey", kKey}, {"AppUpdateAllowInsecureLocalhost", "true"}}),
      std::nullopt);
}

TEST(UpdateConfigurationError, describesEachCase) {
  EXPECT_EQ(Error::invalidFeedURL("a").errorDescription(),
            "The update feed URL must use HTTPS (or explicit localhost development mode).");
  EXPECT_EQ(Error::invalidChannel("a").errorDescription(), "The update channel must be stable or beta.");
  EXPECT_EQ(Error::missingFeedURL().errorDescription(), "No update feed is configured for this build.");
  EXPECT_EQ(Error::missingPublicKey().errorDescription(),
            "No Sparkle update signing public key is configured for this build.");
  EXPECT_EQ(Error::invalidPublicKey().errorDescription(),
            "The Sparkle update signing public key is invalid.");
}

struct CountingUpdater final : StandardUpdater {
  explicit CountingUpdater(int& counter)
      : checks(counter) {}

  void checkForUpdates() override { ++checks; }

  int& checks;
};

struct RecordingProvider final : UpdaterProvider {
  std::unique_ptr<StandardUpdater> startUpdater(const UpdateSource& source,
                                                std::weak_ptr<const UpdaterDelegate> asked) override {
    started = source;
    delegate = std::move(asked);
    return std::make_unique<CountingUpdater>(checks);
  }

  std::optional<UpdateSource> started;
  std::weak_ptr<const UpdaterDelegate> delegate;
  int checks = 0;
};

TEST(SparkleUpdateController, isThereWithAValidConfigurationAlone) {
  struct Case {
    std::string channel;
    std::optional<std::set<std::string>> allowed;
  };

  for (const auto& [channel, allowed] :
       {Case{"stable", std::set<std::string>()}, Case{"beta", std::set<std::string>{"beta"}},
        Case{"nightly", std::nullopt}}) {
    RecordingProvider provider;
    const simulated::SimulatedBundle bundle("com.example", {{"SUFeedURL", kFeed},
                                                            {"SUPublicEDKey", kKey},
                                                            {"AppUpdateAdditionalPublicEDKey", " other\n"},
                                                            {"AppUpdateChannel", channel}});
    SparkleUpdateController controller(bundle, provider);
    controller.checkForUpdates();
    EXPECT_EQ(controller.isAvailable(), allowed.has_value());
    EXPECT_EQ(provider.checks, allowed ? 1 : 0);
    EXPECT_EQ(provider.started, allowed ? std::optional(UpdateSource{kFeed, kKey, "other"}) : std::nullopt);
    const auto delegate = provider.delegate.lock();
    ASSERT_EQ(delegate != nullptr, allowed.has_value()) << "the controller keeps its delegate alive";
    if (delegate) {
      EXPECT_EQ(delegate->allowedChannels(CountingUpdater(provider.checks)), *allowed);
    }
  }
}

TEST(UpdateChannel, hasExactNames) {
  EXPECT_EQ(kAllUpdateChannels, (std::array{UpdateChannel::stable, UpdateChannel::beta}));
  for (const std::string_view text : {"stable", "beta", "Beta", "beta ", "", "stabl"}) {
    const auto channel = updateChannel(text);
    EXPECT_EQ(channel ? rawValue(*channel) : "", text == "stable" || text == "beta" ? text : "");
  }
}

} // namespace
} // namespace sonvel
