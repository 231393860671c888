#include "audio/app_naming.h"

#include <gtest/gtest.h>

namespace sonvel {

using Text = std::optional<std::string>;

TEST(AppNaming, FindsTheApplicationOfAProcess) {
  const std::pair<Text, Text> cases[] = {
      {std::nullopt, std::nullopt},
      {"", std::nullopt},
      {"com.google.Chrome.helper.renderer", "com.google.Chrome"},
      {"COM.GOOGLE.CHROME.HELPER", "COM.GOOGLE.CHROME"},
      {"com.example.helper.app.helper", "com.example"},
      {"com.example.helpful", "com.example.helpful"},
      {".helper", ""},
      {"com.apple.WEBKIT.Networking.helper", "com.apple.Safari"},
      {"com.apple.Web\u212Ait.GPU", "com.apple.Safari"}, // the Kelvin sign is a capital k
      {"org.\u212Aelvin.\u0130stanbul.Helper.gpu", "org.\u212Aelvin.\u0130stanbul"},
  };
  for (const auto& [bundleID, parent] : cases)
    EXPECT_EQ(AppNaming::parentBundleID(bundleID), parent) << bundleID.value_or("(none)");
}

TEST(AppNaming, CleansRolesOffTheEnd) {
  const std::pair<Text, Text> cases[] = {
      {" \t ", std::nullopt},
      {"\u3000\u00A0\u1680\u2003\u200A\u202F\u205F", std::nullopt},
      {"\u2003Player\u00A0", "Player"},
      {"Playe\u0440", "Playe\u0440"}, // its last bytes look like a space but are none
      {"Google Chrome Helper (Renderer)", "Google Chrome"},
      {"Bar Web Content Helper", "Bar"},
      {"Baz Helper Helper Helper", "Baz"},
      {"Qux Helper\t Storage", "Qux"},
      {"Player helper", "Player helper"},
      {"  Helper ", "Helper"},
      {"Helper (GPU) Tool", "Helper (GPU) Tool"},
  };
  for (const auto& [name, cleaned] : cases)
    EXPECT_EQ(AppNaming::cleanedProcessName(name), cleaned) << name.value_or("(none)");
}

TEST(AppNaming, ChoosesTheFirstNameThatServes) {
  const struct {
    Text bundleID, processName, localizedName;
    std::string name;
  } cases[] = {
      // The table has priority over the process's name.
      {"com.microsoft.teams2.helper", "x", "y", "Microsoft Teams"},
      {"com.apple.TVRemote", std::nullopt, "Remote", "Apple TV"},
      {"com.tinyspec\u212A.slac\u212Amacgap", std::nullopt, "y", "Slack"},
      // Next: the localized name, then the process's own, both cleaned.
      {"com.example.player", "Engine", "Player Helper", "Player"},
      {"com.example.player", "Engine Helper (GPU)", "  ", "Engine"},
      // Last: a localized name of spaces, and the identifier.
      {"com.example.player", " ", "  ", "  "},
      {"com.example.Recorder.helper.gpu", std::nullopt, "", "Recorder"},
      {"com.example.Recorder..", "", "", "Recorder"},
      {"...", std::nullopt, std::nullopt, "..."},
      {"", "", "", "Unknown App"},
  };

  for (const auto& [bundleID, processName, localizedName, name] : cases)
    EXPECT_EQ(AppNaming::friendlyName(bundleID, processName, localizedName), name);
}

} // namespace sonvel
