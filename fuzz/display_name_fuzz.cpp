#include "expect.h"
#include "text/display_name.h"

#include <QString>
#include <cstdint>
#include <string>
#include <string_view>

namespace sonvel {
namespace {

using fuzz::expect;

// The check uses Qt's tables, the checked code GLib's.

bool isMark(QChar::Category category) {
  return category == QChar::Mark_NonSpacing || category == QChar::Mark_SpacingCombining ||
         category == QChar::Mark_Enclosing;
}

bool isForbidden(char32_t character) {
  const auto category = QChar::category(character);
  const bool turns = character == 0x061C || character == 0x200E || character == 0x200F ||
                     (character >= 0x202A && character <= 0x202E) ||
                     (character >= 0x2066 && character <= 0x2069);
  return turns || category == QChar::Other_Control || category == QChar::Separator_Line ||
         category == QChar::Separator_Paragraph;
}

void check(std::string_view name) {
  const std::string shown = displayName(name);
  const std::u32string characters = QString::fromStdString(shown).toStdU32String();
  expect(QString::fromStdU32String(characters).toStdString() == shown, "the name is valid UTF-8");
  expect(characters.size() <= 256, "the name has at most 256 characters");
  expect(shown.empty() || (shown.front() != ' ' && shown.back() != ' '), "the name has no space at its ends");
  expect(shown.find("  ") == std::string::npos, "spaces are single");
  expect(displayName(shown) == shown, "a clean name stays unchanged");
  int marks = 4; // none precede the first character
  for (const char32_t character : characters) {
    expect(!isForbidden(character), "no line end and no direction control");
    marks = isMark(QChar::category(character)) ? marks + 1 : 0;
    expect(marks <= 4, "at most four combining marks on a character");
  }
}

} // namespace
} // namespace sonvel

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  sonvel::check({reinterpret_cast<const char*>(data), size});
  return 0;
}
