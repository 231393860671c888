#pragma once

#include "platform/relay.h"

#include <QCoreApplication>
#include <QThreadPool>
#include <functional>
#include <memory>
#include <utility>

namespace sonvel::updater {

/// Posts a relay's work to the main thread through the application's event queue.
inline Relay::Post onMainThread() {
  return [](std::function<void()> work) {
    QMetaObject::invokeMethod(QCoreApplication::instance(), std::move(work), Qt::QueuedConnection);
  };
}

/// Runs `work` on another thread, then posts `after` with its result through `relay`.
template <typename Result>
void runAside(const Relay& relay, std::function<Result()> work, std::function<void(Result)> after) {
  QThreadPool::globalInstance()->start(
      [work = std::move(work), back = relay.bind<Result>(std::move(after))] { back(work()); });
}

} // namespace sonvel::updater
