#include "engine/uuid.h"

#include <random>
#include <string_view>

namespace sonvel {

std::string randomUUID() {
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  // 4 is the version; y is one of the four digits whose upper bits are the variant's 10.
  std::string text = "xxxxxxxx-xxxx-4xxx-yxxx-xxxxxxxxxxxx";
  std::random_device random;
  std::uniform_int_distribution<std::size_t> anyDigit(0, 15);
  std::uniform_int_distribution<std::size_t> variantDigit(8, 11);
  for (char& character : text) {
    if (character == 'x') character = kDigits[anyDigit(random)];
    if (character == 'y') character = kDigits[variantDigit(random)];
  }
  return text;
}

} // namespace sonvel
