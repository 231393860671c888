#include "updater/relay.h"

#include <QThreadPool>
#include <mutex>
#include <utility>

namespace sonvel::updater {

struct Relay::Target {
  std::mutex mutex;
  std::unique_ptr<QObject> context; ///< calls wait in its thread's event queue and go with it
};

Relay::Relay()
    : target_(std::make_shared<Target>()) {
  target_->context = std::make_unique<QObject>();
}

Relay::~Relay() {
  const std::lock_guard lock(target_->mutex);
  target_->context.reset();
}

std::function<void()> Relay::bind(std::function<void()> work) const {
  return [target = target_, work = std::move(work)] {
    const std::lock_guard lock(target->mutex);
    if (target->context) QMetaObject::invokeMethod(target->context.get(), work, Qt::QueuedConnection);
  };
}

void Relay::start(std::function<void()> work) {
  QThreadPool::globalInstance()->start(std::move(work));
}

} // namespace sonvel::updater
