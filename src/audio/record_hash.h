#pragma once

#include <cstddef>
#include <functional>

namespace sonvel {

/// Hashes all fields of a record, in order.
template <class... Fields> std::size_t recordHash(const Fields&... fields) noexcept {
  constexpr std::size_t kGoldenRatio = 0x9E3779B97F4A7C15ULL;
  std::size_t hash = 0;
  ((hash ^= std::hash<Fields>{}(fields) + kGoldenRatio + (hash << 6U) + (hash >> 2U)), ...);
  return hash;
}

} // namespace sonvel
