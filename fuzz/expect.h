#pragma once

#include <cstdio>
#include <cstdlib>

namespace sonvel::fuzz {

/// Reports a finding and ends the run unless `holds`.
inline void expect(bool holds, const char* what) {
  if (holds) return;
  std::fprintf(stderr, "Does not hold: %s\n", what);
  std::abort();
}

} // namespace sonvel::fuzz
