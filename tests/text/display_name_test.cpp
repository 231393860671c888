#include "text/display_name.h"

#include <gtest/gtest.h>

namespace sonvel {
namespace {

std::string repeated(const char* text, int count) {
  std::string result;
  for (int i = 0; i < count; ++i)
    result += text;
  return result;
}

TEST(DisplayName, IsOneLineThatNothingLeaves) {
  const std::pair<std::string, std::string> cases[] = {
      {"Fire fox", "Fire fox"},
      {" two\r\n\tlines \u2028 \u00a0 end ", "two lines end"},
      {"a\u202egpj.b\u2066c\u200e\u061c\ufeff", "agpj.bc"},
      {"\x1b[31mred\x07", "[31mred"},
      {std::string("nu\0ll", 5), "nu\ufffdll"},
      {"\xff\xc3(", "\ufffd\ufffd("},
      {"\u0301e" + repeated("\u0301", 50) + "!", "e" + repeated("\u0301", 4) + "!"},
      {"e " + repeated("\u0301", 50), "e"},
      // these need their joiners
      {"\U0001f469\u200d\U0001f4bb \u0645\u06cc\u200c\u062e\u0648\u0627\u0647\u0645",
       "\U0001f469\u200d\U0001f4bb \u0645\u06cc\u200c\u062e\u0648\u0627\u0647\u0645"},
      {"\u200b\u3164\u2800 \u202e", ""},
      {repeated("\u00fc", 4096), repeated("\u00fc", 256)},
      {repeated("\u00fc ", 256), repeated("\u00fc ", 127) + "\u00fc"},
  };
  for (const auto& [text, shown] : cases)
    EXPECT_EQ(displayName(text), shown) << text.substr(0, 40);
}

} // namespace
} // namespace sonvel
