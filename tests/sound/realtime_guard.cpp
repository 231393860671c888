// Preloaded into a program with PipeWire nodes: ends it if its code uses the heap, takes a lock or makes a
// system call during a cycle of the graph, and counts cycles and their page faults. REALTIME_REPORT names an
// existing file for the counts; REALTIME_SEED makes one cycle break a rule: heap, lock, call or page.
#include <pipewire/pipewire.h>
#include <spa/node/node.h>

#include <array>
#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <fcntl.h>
#include <pthread.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <unistd.h>

extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* memory, std::size_t size);
void __libc_free(void* memory);
}

namespace {

constexpr int kUnsafeExitCode = 99;
constexpr std::uint64_t kSeededCycle = 50;

struct Report {
  std::atomic<std::uint64_t> nodes, cycles, faults,
      firstFaults; ///< firstFaults: in the first cycle of a node
};

/// The kernel reads this before each system call of the thread.
[[gnu::tls_model("initial-exec")]] thread_local volatile char gate = SYSCALL_DISPATCH_FILTER_ALLOW;

Report* report = nullptr;
void* volatile sink = nullptr;

void refuse(const char* what) noexcept {
  if (gate == SYSCALL_DISPATCH_FILTER_ALLOW) return;
  gate = SYSCALL_DISPATCH_FILTER_ALLOW;
  (void)!write(STDERR_FILENO, what, std::strlen(what));
  _exit(kUnsafeExitCode);
}

template <class Function> Function real(const char* name) noexcept {
  return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}

void seed(const char* what) noexcept {
  if (std::strcmp(what, "heap") == 0) sink = std::malloc(8);
  if (std::strcmp(what, "lock") == 0) {
    pthread_mutex_t mutex = PTHREAD_MUTEX_INITIALIZER;
    pthread_mutex_lock(&mutex);
  }
  if (std::strcmp(what, "call") == 0) getppid();
  if (std::strcmp(what, "page") == 0) *static_cast<volatile char*>(sink) = 1;
}

/// A node's processing, placed between the library and the program.
struct Guarded {
  void* node = nullptr;
  int (*process)(void* node) = nullptr;
  std::uint64_t cycles = 0; ///< so far

  int runCycle() noexcept {
    static const char* const seeded = std::getenv("REALTIME_SEED");
    static thread_local const bool isSetUp = [] {
      prctl(PR_SET_SYSCALL_USER_DISPATCH, PR_SYS_DISPATCH_ON, 0, 0, &gate);
      return true;
    }();
    const bool isSeeded = isSetUp && seeded != nullptr && cycles == kSeededCycle;
    if (isSeeded) sink = mmap(nullptr, 4096, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    const auto before = faults();
    gate = SYSCALL_DISPATCH_FILTER_BLOCK;
    const int result = process(node);
    if (isSeeded) seed(seeded);
    gate = SYSCALL_DISPATCH_FILTER_ALLOW;
    (cycles++ == 0 ? report->firstFaults : report->faults) += faults() - before;
    ++report->cycles;
    return result;
  }

 private:
  static std::uint64_t faults() noexcept {
    rusage usage{};
    getrusage(RUSAGE_THREAD, &usage);
    return static_cast<std::uint64_t>(usage.ru_minflt + usage.ru_majflt);
  }
};

std::array<Guarded, 64> nodes; ///< `report->nodes` of them; a later one may have the address of a former

int guardedProcess(void* node) noexcept {
  for (std::size_t i = report->nodes; i > 0; --i)
    if (nodes[i - 1].node == node) return nodes[i - 1].runCycle();
  return 0;
}

[[gnu::constructor]] void begin() noexcept {
  const char* const file = std::getenv("REALTIME_REPORT");
  const int descriptor = open(file != nullptr ? file : "", O_RDWR | O_CLOEXEC);
  report = static_cast<Report*>(
      mmap(nullptr, sizeof(Report), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_POPULATE, descriptor, 0));

  struct sigaction action {};

  action.sa_handler = [](int) { refuse("a system call in a cycle\n"); };
  sigaction(SIGSYS, &action, nullptr);
}

} // namespace

extern "C" {

void* malloc(std::size_t size) {
  refuse("heap in a cycle\n");
  return __libc_malloc(size);
}

void* calloc(std::size_t count, std::size_t size) {
  refuse("heap in a cycle\n");
  return __libc_calloc(count, size);
}

void* realloc(void* memory, std::size_t size) {
  refuse("heap in a cycle\n");
  return __libc_realloc(memory, size);
}

void free(void* memory) {
  refuse("heap in a cycle\n");
  __libc_free(memory);
}

int pthread_mutex_lock(pthread_mutex_t* mutex) {
  refuse("a lock in a cycle\n");
  static const auto function = real<int (*)(pthread_mutex_t*)>("pthread_mutex_lock");
  return function(mutex);
}

/// The program exports only nodes of one kind, one after the other.
pw_proxy* pw_core_export(pw_core* core, const char* type, const spa_dict* properties, void* object,
                         std::size_t userDataSize) {
  static const auto function = real<decltype(&pw_core_export)>("pw_core_export");
  static spa_node_methods guarded =
      *static_cast<const spa_node_methods*>(static_cast<spa_node*>(object)->iface.cb.funcs);
  auto* node = static_cast<spa_node*>(object);
  const std::size_t index = report->nodes++;
  if (index >= nodes.size()) _exit(kUnsafeExitCode);
  nodes.at(index) = {node->iface.cb.data,
                     static_cast<const spa_node_methods*>(node->iface.cb.funcs)->process};
  guarded.process = guardedProcess;
  node->iface.cb.funcs = &guarded;
  return function(core, type, properties, object, userDataSize);
}
}
