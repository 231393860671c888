// Not real-time safe: scripts/check-realtime must report each function.
#include <cstdio>
#include <mutex>
#include <vector>

namespace sonvel {

std::vector<float> allocates(std::size_t count) {
  return std::vector<float>(count);
}

void locks(std::mutex& mutex) {
  mutex.lock();
}

void throws() {
  throw 1;
}

void logs() {
  std::puts("cycle");
}

} // namespace sonvel
