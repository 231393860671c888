#pragma once

#include <cstdio>
#include <cstdlib>

namespace sonvel::fuzz {

/// Ends the run with a finding unless `holds`.
inline void expect(bool holds, const char* what) {
  if (holds) return;
  std::fprintf(stderr, "Does not hold: %s\n", what);
  std::abort();
}

} // namespace sonvel::fuzz
