#include "desktop/program_bundle.h"
#include "desktop/temporary_folder.h"

#include <gtest/gtest.h>

#include <fstream>

namespace sonvel::desktop {
namespace {

using InfoObject = BundleInformation::InfoObject;

TEST(ProgramBundle, hasNoInformationWhereNoneIsInstalled) {
  EXPECT_EQ(ProgramBundle().objectForInfoKey("SUFeedURL"), std::nullopt);
  EXPECT_EQ(ProgramBundle("/nonexistent/information.json").objectForInfoKey("SUFeedURL"), std::nullopt);
  EXPECT_EQ(ProgramBundle::informationFileOf("/opt/sonvel/bin/sonvel"),
            "/opt/sonvel/share/sonvel/information.json");
}

TEST(ProgramBundle, readsTextsAndTruthValues) {
  const TemporaryFolder folder;
  const std::string file = folder.path("information.json");
  const auto read = [&](const std::string& content, std::string_view key) {
    std::ofstream(file) << content;
    return ProgramBundle(file).objectForInfoKey(key);
  };
  const std::string object = R"({"text": "a", "truth": true, "number": 1, "null": null, "list": ["a"]})";
  EXPECT_EQ(read(object, "text"), InfoObject("a"));
  EXPECT_EQ(read(object, "truth"), InfoObject(true));
  for (const char* other : {"number", "null", "list", "absent"})
    EXPECT_EQ(read(object, other), std::nullopt);

  EXPECT_EQ(read(R"(["text"])", "text"), std::nullopt);
  EXPECT_EQ(read(R"({"text": "a")", "text"), std::nullopt);
  EXPECT_EQ(read(R"({"text": "a", "more": ")" + std::string(70'000, 'm') + "\"}", "text"), std::nullopt);
}

} // namespace
} // namespace sonvel::desktop
