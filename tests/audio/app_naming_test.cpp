#include "audio/app_naming.h"

#include <gtest/gtest.h>

#include <vector>

namespace sonvel {
namespace {

using OptionalText = std::optional<std::string>;

TEST(AppNaming, FindsTheApplicationOfAProcess) {
  const struct {
    std::optional<std::string_view> bundleID;
    OptionalText parent;
  } kCases[] = {
      {std::nullopt, std::nullopt},
      {"", std::nullopt},
      {"com.spotify.client", "com.spotify.client"},
      {"com.google.Chrome.helper.renderer", "com.google.Chrome"},
      {"com.brave.Browser.helper", "com.brave.Browser"},
      {"COM.GOOGLE.CHROME.HELPER", "COM.GOOGLE.CHROME"},
      {"com.example.helper.app.helper", "com.example"},
      {"com.example.helpful", "com.example.helpful"},
      {"com.example.Helperish", "com.example"},
      {".helper", ""},
      {"com.apple.WebKit.WebContent", "com.apple.Safari"},
      {"com.apple.WEBKIT.Networking.helper", "com.apple.Safari"},
      {"com.apple.We\u212AKit", "com.apple.We\u212AKit"},
      {"com.apple.Web\u212Ait.GPU", "com.apple.Safari"}, // the Kelvin sign is a capital k
      {"org.\u212Aelvin.\u0130stanbul.Helper.gpu",
       "org.\u212Aelvin.\u0130stanbul"}, // longer than in lower case
  };

  for (const auto& [bundleID, parent] : kCases)
    EXPECT_EQ(AppNaming::parentBundleID(bundleID), parent) << bundleID.value_or("(none)");
}

TEST(AppNaming, CleansRolesOffTheEnd) {
  const struct {
    std::optional<std::string_view> name;
    OptionalText cleaned;
  } kCases[] = {
      {std::nullopt, std::nullopt},
      {"", std::nullopt},
      {" \t ", std::nullopt},
      {"\u3000\u00A0\u1680\u2003\u200A\u202F\u205F", std::nullopt},
      {"\u2003Player\u00A0", "Player"},
      {"\nPlayer\n", "\nPlayer\n"},
      {"Playe\u0440", "Playe\u0440"},   // its last bytes are no space
      {"Player\u200B", "Player\u200B"}, // no space separator
      {"Google Chrome Helper (Renderer)", "Google Chrome"},
      {"Slack Helper (GPU)", "Slack"},
      {"Foo GPU Process", "Foo"},
      {"Bar Web Content Helper", "Bar"},
      {"Baz Helper Helper Helper", "Baz"},
      {"Qux Helper\t Storage", "Qux"},
      {"Safari Graphics and Media", "Safari"},
      {"Player helper", "Player helper"},
      {" Helper", "Helper"},
      {"  Helper ", "Helper"},
      {"Helper Helper", "Helper"},
      {"\u00A0 Helper (GPU)", "Helper"},
      {"Player\u00A0Helper", "Player\u00A0Helper"},
      {"Helper (GPU) Tool", "Helper (GPU) Tool"},
  };

  for (const auto& [name, cleaned] : kCases)
    EXPECT_EQ(AppNaming::cleanedProcessName(name), cleaned) << name.value_or("(none)");
}

TEST(AppNaming, ChoosesTheFirstNameThatServes) {
  const struct {
    std::optional<std::string_view> bundleID;
    std::optional<std::string_view> processName;
    std::optional<std::string_view> localizedName;
    std::string name;
  } kCases[] = {
      // The table wins over what the process says, the longer prefix over the shorter.
      {"com.microsoft.teams2.helper", "x", "y", "Microsoft Teams"},
      {"com.google.Chrome.canary", std::nullopt, "Chrome Canary", "Google Chrome"},
      {"com.apple.WebKit.GPU", std::nullopt, "Safari Graphics and Media", "Safari"},
      {"com.apple.TVRemote", std::nullopt, "Remote", "Apple TV"},
      {"com.tinyspec\u212A.slac\u212Amacgap", std::nullopt, "y", "Slack"},
      // Then the localized name and the process's own, cleaned.
      {"com.example.player", "Engine", "Player Helper", "Player"},
      {"com.example.player", "Engine Helper (GPU)", std::nullopt, "Engine"},
      {"com.example.player", "Engine", "  ", "Engine"},
      {std::nullopt, std::nullopt, "Player Helper", "Player"},
      // Then a localized name of spaces, and what the identifier gives.
      {"com.example.player", " ", "  ", "  "},
      {"com.example.player", std::nullopt, std::nullopt, "player"},
      {"com.example.Recorder.helper.gpu", std::nullopt, "", "Recorder"},
      {"com.example.Recorder..", "", "", "Recorder"},
      {"Recorder", std::nullopt, std::nullopt, "Recorder"},
      {"...", std::nullopt, std::nullopt, "..."},
      {".helper", std::nullopt, std::nullopt, ".helper"},
      {std::nullopt, std::nullopt, std::nullopt, "Unknown App"},
      {"", "", "", "Unknown App"},
  };

  for (const auto& [bundleID, processName, localizedName, name] : kCases)
    EXPECT_EQ(AppNaming::friendlyName(bundleID, processName, localizedName), name)
        << bundleID.value_or("(none)") << ", " << localizedName.value_or("(none)");
}

TEST(AppNaming, HidesThePlumbingOfTheSystem) {
  const struct {
    std::optional<std::string_view> executable;
    std::optional<std::string_view> bundleID;
    bool isRunningApp;
    bool isSystem;
  } kCases[] = {
      {"coreaudiod", std::nullopt, true, true},
      {"coreaudiod", "com.example.player", true, true},
      {"SystemUIServer", "com.example.player", false, true},
      {"CoreAudioD", std::nullopt, true, false},
      {"coreaudiod2", "com.example.player", false, false},
      {"player", std::nullopt, false, true},
      {std::nullopt, std::nullopt, false, true},
      {std::nullopt, "", false, true},
      {std::nullopt, "", true, false},
      {std::nullopt, "com.example.player", false, false},
  };

  for (const auto& [executable, bundleID, isRunningApp, isSystem] : kCases)
    EXPECT_EQ(AppNaming::isSystemAudioProcess(executable, bundleID, isRunningApp), isSystem)
        << executable.value_or("(none)") << ", " << bundleID.value_or("(none)") << ", " << isRunningApp;
}

TEST(AppNaming, KnowsItsOwnAggregateDevices) {
  for (const auto* own : {"SonvelAgg-512", "SonvelAgg", "SonvelProbeAgg", "SonvelProbe"})
    EXPECT_TRUE(AppNaming::isOwnAggregateDevice(own)) << own;
  for (const auto* other : {"", "sonvelagg-512", "SonvelTap-512", "My SonvelAgg-512", "Speakers"})
    EXPECT_FALSE(AppNaming::isOwnAggregateDevice(other)) << other;
}

} // namespace
} // namespace sonvel
