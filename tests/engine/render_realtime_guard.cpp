#include "engine/render_realtime_guard.h"

#include <cerrno>
#include <cstddef>
#include <cstdlib>
#include <dlfcn.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <pthread.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <unistd.h>

// Replaces the heap and lock functions of the whole program; the real ones do the work.
extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* memory, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);
void __libc_free(void* memory);
}

namespace {

using LockMutex = int (*)(pthread_mutex_t*);

bool isGuarded = false;
LockMutex realLockMutex = nullptr;

void refuseIfGuarded() noexcept {
  if (isGuarded) _exit(sonvel::kUnsafeCallExitCode);
}

LockMutex findRealLockMutex() noexcept {
  return reinterpret_cast<LockMutex>(dlsym(RTLD_NEXT, "pthread_mutex_lock"));
}

/// Permits only the process's exit; any other system call kills it.
bool allowExitAlone() noexcept {
  sock_filter steps[] = {
      BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
      BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_exit_group, 0, 1),
      BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
      BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_KILL_PROCESS),
  };
  const sock_fprog program{.len = sizeof steps / sizeof *steps, .filter = steps};
  return prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 &&
         prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program) == 0;
}

} // namespace

extern "C" {

[[gnu::visibility("default")]] void* malloc(std::size_t size) {
  refuseIfGuarded();
  return __libc_malloc(size);
}

[[gnu::visibility("default")]] void* calloc(std::size_t count, std::size_t size) {
  refuseIfGuarded();
  return __libc_calloc(count, size);
}

[[gnu::visibility("default")]] void* realloc(void* memory, std::size_t size) {
  refuseIfGuarded();
  return __libc_realloc(memory, size);
}

[[gnu::visibility("default")]] void* aligned_alloc(std::size_t alignment, std::size_t size) {
  refuseIfGuarded();
  return __libc_memalign(alignment, size);
}

[[gnu::visibility("default")]] void free(void* memory) {
  refuseIfGuarded();
  __libc_free(memory);
}

[[gnu::visibility("default")]] int pthread_mutex_lock(pthread_mutex_t* mutex) {
  refuseIfGuarded();
  if (realLockMutex == nullptr) realLockMutex = findRealLockMutex();
  return realLockMutex(mutex);
}
}

namespace sonvel {

bool enterGuardedRun() noexcept {
  if (!allowExitAlone()) return false;
  isGuarded = true;
  return true;
}

} // namespace sonvel
