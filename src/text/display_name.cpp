#include "text/display_name.h"

#include <glib.h>

#include <array>
#include <memory>
#include <utility>

namespace sonvel {
namespace {

constexpr int kMaximumCharacters = 256;
constexpr int kMaximumMarks = 4;                   ///< more than any script needs on one character
constexpr std::size_t kMaximumBytes = 16UL * 1024; ///< of the input that is read

enum class Kind { visible, mark, joiner, space, invisible };

Kind kindOf(gunichar character) noexcept {
  switch (character) {
  case 0x200C: // joiners change the glyphs beside them
  case 0x200D:
    return Kind::joiner;
  case 0x115F: // letters without a glyph
  case 0x1160:
  case 0x2800:
  case 0x3164:
  case 0xFFA0:
    return Kind::space;
  default:
    break;
  }
  switch (g_unichar_type(character)) {
  case G_UNICODE_CONTROL:
  case G_UNICODE_LINE_SEPARATOR:
  case G_UNICODE_PARAGRAPH_SEPARATOR:
  case G_UNICODE_SPACE_SEPARATOR:
    return Kind::space;
  case G_UNICODE_FORMAT:
  case G_UNICODE_SURROGATE:
    return Kind::invisible;
  case G_UNICODE_NON_SPACING_MARK:
  case G_UNICODE_SPACING_MARK:
  case G_UNICODE_ENCLOSING_MARK:
    return Kind::mark;
  default:
    return Kind::visible;
  }
}

/// Takes one character after the other.
class Cleaning {
 public:
  void take(gunichar character) {
    const Kind kind = kindOf(character);
    if (kind == Kind::space) {
      isSpaceDue_ = count_ > 0;
      marks_ = kMaximumMarks; // otherwise a mark would combine with the space
      return;
    }
    if (kind == Kind::invisible || (kind != Kind::visible && (count_ == 0 || marks_ >= kMaximumMarks)))
      return;
    if (kind == Kind::visible)
      marks_ = 0;
    else
      ++marks_;
    if (isSpaceDue_) append(' ');
    isSpaceDue_ = false;
    append(character);
  }

  bool isFull() const noexcept { return count_ >= kMaximumCharacters; }

  std::string take() { return std::move(text_); }

 private:
  void append(gunichar character) {
    if (isFull()) return;
    if (++count_ == kMaximumCharacters && character == ' ') return; // no room for another character after it
    std::array<char, 6> bytes{};
    text_.append(bytes.data(), static_cast<std::size_t>(g_unichar_to_utf8(character, bytes.data())));
  }

  std::string text_;
  int count_ = 0; ///< of characters
  int marks_ = 0; ///< combining marks since the last visible character
  bool isSpaceDue_ = false;
};

} // namespace

std::string displayName(std::string_view text) {
  text = text.substr(0, kMaximumBytes);
  const std::unique_ptr<char, decltype(&g_free)> valid(
      g_utf8_make_valid(text.data(), static_cast<gssize>(text.size())), &g_free);
  Cleaning cleaning;
  for (const char* next = valid.get(); *next != '\0' && !cleaning.isFull(); next = g_utf8_next_char(next))
    cleaning.take(g_utf8_get_char(next));
  return cleaning.take();
}

} // namespace sonvel
