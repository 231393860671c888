#include "simulated/desktop.h"
#include "updater/update_feed_configuration.h"

#include <gtest/gtest.h>

namespace sonvel {
namespace {

using Error = UpdateConfigurationError;
using Text = std::optional<std::string>;

const std::string kFeed = "https://updates.example/appcast.xml";
const std::string kKey = "AAECAwQFBgcICQoLDA0ODxAREhMUFRYXGBkaGxwdHh8=";

/// The error's text and payload; empty without an error.
std::string errorOf(const Text& feed, const Text& key = kKey, const Text& channel = {},
                    bool localhost = false) {
  try {
    const UpdateFeedConfiguration configuration(feed, key, channel, localhost);
    EXPECT_EQ(UpdateFeedConfiguration(" " + *feed + "\n", "\n" + *key + " ", channel, localhost),
              configuration);
    return {};
  } catch (const Error& error) {
    return error.errorDescription() + error.payload();
  }
}

TEST(UpdateFeedConfiguration, acceptsSafeFeedsOnly) {
  for (const char* feed : {"https://updates.example", "https://updates.example:8443/a?b#c",
                           "https://user@updates.example/", "https://[::1]:8443/a"})
    EXPECT_EQ(errorOf(feed), "") << feed;
  const std::string insecure = "The update feed URL must use HTTPS (or explicit localhost development mode).";
  for (const char* feed : {"http://localhost:8080/a", "http://localhost", "http://127.0.0.1:8080/a"}) {
    EXPECT_EQ(errorOf(feed, kKey, {}, true), "") << feed;
    EXPECT_EQ(errorOf(feed), insecure + feed);
  }
  for (const char* feed :
       {"http://updates.example/", "http://[::1]:8080/a", "http://localhost.example/",
        "http://localhost@updates.example/", "http://updates.example#@localhost/",
        "http://updates.example\\@localhost/", "http://%6cocalhost/", "HTTPS://updates.example/",
        "file:///tmp/appcast.xml", "https:///appcast.xml", "https://updates.example/a b", "not an address"})
    EXPECT_EQ(errorOf(std::string(" ") + feed + '\n', kKey, {}, true), insecure + feed);
  for (const Text& none : {Text(), Text(" \t\r\n"), Text("\xC2\xA0")})
    EXPECT_EQ(errorOf(none), "No update feed is configured for this build.");
}

TEST(UpdateFeedConfiguration, acceptsKeysOf32BytesOnly) {
  const auto keyOf = [](qsizetype bytes) { return QByteArray(bytes, 'k').toBase64().toStdString(); };
  EXPECT_EQ(errorOf(kFeed, keyOf(32)), "");
  for (const std::string& key : {keyOf(31), keyOf(33), kKey.substr(0, 20) + "\n" + kKey.substr(20),
                                 kKey.substr(0, 20) + "    " + kKey.substr(20), kKey.substr(0, 43),
                                 kKey + "====", "_" + kKey.substr(1), std::string("====")})
    EXPECT_EQ(errorOf(kFeed, key), "The Sparkle update signing public key is invalid.") << key;
  for (const Text& none : {Text(), Text(" \n")})
    EXPECT_EQ(errorOf(kFeed, none), "No Sparkle update signing public key is configured for this build.");
}

TEST(UpdateFeedConfiguration, knowsTwoChannels) {
  using enum UpdateChannel;
  for (const auto& [text, channel] :
       {std::pair{Text(), stable}, {"stable", stable}, {" BETA\n", beta}, {"Beta", beta}})
    EXPECT_EQ(UpdateFeedConfiguration(kFeed, kKey, text, false).channel, channel);
  EXPECT_EQ(errorOf(kFeed, kKey, " Nightly "), "The update channel must be stable or beta.nightly");
}

TEST(UpdateFeedConfiguration, isReadFromABundleWhereValuesOfAnotherTypeCountAsAbsent) {
  const std::string local = "http://localhost:8080/appcast.xml";

  const struct {
    simulated::SimulatedBundle::Information information;
    std::optional<UpdateFeedConfiguration> configuration;
  } cases[] = {
      {{{"SUFeedURL", kFeed}, {"SUPublicEDKey", true}}, {}},
      {{{"SUFeedURL", kFeed}, {"SUPublicEDKey", kKey}, {"AppUpdateChannel", true}},
       {{kFeed, kKey, {}, false}}},
      {{{"SUFeedURL", local}, {"SUPublicEDKey", kKey}, {"AppUpdateAllowInsecureLocalhost", true}},
       {{local, kKey, {}, true}}},
      {{{"SUFeedURL", local}, {"SUPublicEDKey", kKey}, {"AppUpdateAllowInsecureLocalhost", "true"}}, {}},
  };

  for (const auto& [information, configuration] : cases)
    EXPECT_EQ(UpdateFeedConfiguration::fromBundle(simulated::SimulatedBundle({}, information)),
              configuration);
}

} // namespace
} // namespace sonvel
