#include "app/quit_deadline.h"

#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdint>
#include <initializer_list>
#include <poll.h>
#include <pthread.h>
#include <sys/eventfd.h>
#include <unistd.h>
#include <utility>
#include <vector>

namespace sonvel {

namespace {

using std::chrono::milliseconds;

constexpr milliseconds kUntilGivingBack{5'000};
constexpr milliseconds kUntilEnd{3'000};

// Written by the signal handler.
std::atomic<int> begunEvents{-1};
static_assert(std::atomic<int>::is_always_lock_free);

void add(int events) noexcept {
  const std::uint64_t one = 1;
  [[maybe_unused]] const ssize_t written = write(events, &one, sizeof one);
}

/// Whether one of these events occurs within the time. Signals must be blocked.
bool happens(std::initializer_list<int> events, milliseconds within) {
  std::vector<pollfd> polled;
  for (const int event : events)
    polled.push_back({.fd = event, .events = POLLIN, .revents = 0});
  return poll(polled.data(), polled.size(), static_cast<int>(within.count())) > 0;
}

} // namespace

QuitDeadline::QuitDeadline()
    : begun_(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK))
    , over_(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK))
    , thread_([this] { watch(); }) {
  pthread_setname_np(thread_.native_handle(), "sonvel-quit");
  begunEvents = begun_;
}

QuitDeadline::~QuitDeadline() {
  begunEvents = -1;
  add(over_);
  thread_.join();
  close(begun_);
  close(over_);
}

void QuitDeadline::setGiveBack(std::function<void()> giveBack) {
  const std::scoped_lock lock(mutex_);
  giveBack_ = std::move(giveBack);
}

void QuitDeadline::begin() noexcept {
  add(begun_);
}

void QuitDeadline::beginFromSignal() noexcept {
  const int events = begunEvents.load(std::memory_order_relaxed);
  if (events >= 0) add(events);
}

void QuitDeadline::watch() {
  sigset_t all;
  sigfillset(&all);
  pthread_sigmask(SIG_BLOCK, &all, nullptr);  // signals would interrupt the wait
  happens({begun_, over_}, milliseconds(-1)); // no time limit
  if (happens({over_}, kUntilGivingBack)) return;
  {
    const std::scoped_lock lock(mutex_);
    if (giveBack_) giveBack_();
  }
  if (happens({over_}, kUntilEnd)) return;
  _exit(kExitCode);
}

} // namespace sonvel
