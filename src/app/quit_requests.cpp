#include "app/quit_requests.h"

#include "app/quit_deadline.h"

#include <QCoreApplication>
#include <QEvent>
#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <sys/eventfd.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace sonvel {

namespace {

constexpr std::array kSignals{SIGTERM, SIGINT, SIGHUP};

// Written by the signal handler; set before the handler is installed.
std::atomic<int> signalEvents{-1};
static_assert(std::atomic<int>::is_always_lock_free);

extern "C" void noteSignal(int /*number*/) {
  const int error = errno;
  const std::uint64_t one = 1;
  [[maybe_unused]] const ssize_t written =
      write(signalEvents.load(std::memory_order_relaxed), &one, sizeof one);
  QuitDeadline::beginFromSignal(); // does not depend on the main thread
  errno = error;
}

// A handler instead of blocked signals, because children inherit blocked signals but not handlers. The
// handler and its eventfd stay until the process ends, for late signals.
int catchSignals() {
  if (signalEvents.load() >= 0) return signalEvents.load();
  signalEvents = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
  if (signalEvents < 0) throw std::system_error(errno, std::generic_category(), "eventfd");
  for (const int number : kSignals) {
    struct sigaction before {};

    sigaction(number, nullptr, &before);
    if (number == SIGHUP && before.sa_handler == SIG_IGN) continue;

    struct sigaction action {};

    action.sa_handler = noteSignal;
    action.sa_flags = SA_RESTART;
    sigaction(number, &action, nullptr);
  }
  return signalEvents;
}

} // namespace

QuitRequests::QuitRequests(std::function<void()> quit, QDBusConnection bus)
    : quit_(std::move(quit))
    , signals_(catchSignals(), QSocketNotifier::Read)
    , sessionManager_([this] { quit_(); }, std::move(bus)) {
  connect(&signals_, &QSocketNotifier::activated, this, [this](QSocketDescriptor events) {
    std::uint64_t count = 0;
    if (read(events, &count, sizeof count) == sizeof count) quit_();
  });
  QCoreApplication::instance()->installEventFilter(this);
}

QuitRequests::~QuitRequests() = default;

bool QuitRequests::eventFilter(QObject* watched, QEvent* event) {
  if (watched != QCoreApplication::instance() || event->type() != QEvent::Quit) return false;
  event->ignore();
  quit_();
  return true;
}

} // namespace sonvel
