#include "expect.h"
#include "text/display_name.h"

#include <QString>
#include <cstdint>
#include <string>
#include <string_view>

namespace sonvel {
namespace {

using fuzz::expect;

// Qt's tables tell what must not be there; what is checked asks GLib's.

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
  expect(QString::fromStdU32String(characters).toStdString() == shown, "it is valid UTF-8");
  expect(characters.size() <= 256, "it is short");
  expect(shown.empty() || (shown.front() != ' ' && shown.back() != ' '), "it has no space around it");
  expect(shown.find("  ") == std::string::npos, "its spaces are single");
  expect(displayName(shown) == shown, "what is clean stays as it is");
  int marks = 4; // it begins with none
  for (const char32_t character : characters) {
    expect(!isForbidden(character), "it is one line that nothing turns round");
    marks = isMark(QChar::category(character)) ? marks + 1 : 0;
    expect(marks <= 4, "it has few marks on a character");
  }
}

} // namespace
} // namespace sonvel

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  sonvel::check({reinterpret_cast<const char*>(data), size});
  return 0;
}
