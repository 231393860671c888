// Preloaded into a program with PipeWire filters: ends it if its code uses the heap, takes a lock or makes a
// system call during a cycle of the graph, and counts cycles and their page faults. REALTIME_REPORT names an
// existing file for the counts; REALTIME_SEED makes one cycle break a rule: heap, lock, call or page.
#include <pipewire/filter.h>

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
  std::atomic<std::uint64_t> filters, cycles, faults,
      firstFaults; ///< firstFaults: in the first cycle of a filter
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

/// A filter's listener, placed between the library and the program.
struct Listener {
  const pw_filter_events* events;
  void* data;
  std::uint64_t cycles = 0; ///< so far

  void runCycle(spa_io_position* position) noexcept {
    static const char* const seeded = std::getenv("REALTIME_SEED");
    static thread_local const bool isSetUp = [] {
      prctl(PR_SET_SYSCALL_USER_DISPATCH, PR_SYS_DISPATCH_ON, 0, 0, &gate);
      return true;
    }();
    const bool isSeeded = isSetUp && seeded != nullptr && cycles == kSeededCycle;
    if (isSeeded) sink = mmap(nullptr, 4096, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    const auto before = faults();
    gate = SYSCALL_DISPATCH_FILTER_BLOCK;
    events->process(data, position);
    if (isSeeded) seed(seeded);
    gate = SYSCALL_DISPATCH_FILTER_ALLOW;
    (cycles++ == 0 ? report->firstFaults : report->faults) += faults() - before;
    ++report->cycles;
  }

 private:
  static std::uint64_t faults() noexcept {
    rusage usage{};
    getrusage(RUSAGE_THREAD, &usage);
    return static_cast<std::uint64_t>(usage.ru_minflt + usage.ru_majflt);
  }
};

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

/// The program uses only these two events.
void pw_filter_add_listener(pw_filter* filter, spa_hook* hook, const pw_filter_events* events, void* data) {
  static const auto function = real<decltype(&pw_filter_add_listener)>("pw_filter_add_listener");
  static const pw_filter_events guarded = [] {
    pw_filter_events made{};
    made.version = PW_VERSION_FILTER_EVENTS;
    made.process = [](void* self, spa_io_position* position) {
      static_cast<Listener*>(self)->runCycle(position);
    };
    made.state_changed = [](void* self, pw_filter_state old, pw_filter_state state, const char* error) {
      const auto& listener = *static_cast<Listener*>(self);
      listener.events->state_changed(listener.data, old, state, error);
    };
    return made;
  }();
  ++report->filters;
  function(filter, hook, &guarded,
           new Listener{events, data}); // never freed: it is used as long as the filter
}
}
