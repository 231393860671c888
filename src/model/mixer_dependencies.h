#pragma once

#include "audio/audio_permission.h"
#include "engine/actor.h"
#include "engine/hardware_error.h"
#include "model/call_failure.h"
#include "model/update_checking.h"
#include "platform/clock.h"
#include "platform/preferences.h"

#include <QCoroTask>
#include <variant>

namespace sonvel {

class HardwareController;

/// The outcome of a controller call: either `value` or `failure` is set.
template <class R> struct CallOutcome {
  std::optional<std::conditional_t<std::is_void_v<R>, std::monostate, R>> value;
  std::optional<CallFailure> failure;
};

/// What the model needs. The referents outlive the model and its tasks.
struct MixerDependencies {
  std::shared_ptr<Actor<HardwareController>> hardware;
  Executor& mainThread; ///< runs on the model's thread
  Clock& clock;
  AudioPermission& permission;
  Preferences& preferences;
  UpdateChecking& updates;

  /// Runs `function` with the controller on its thread, ignoring the outcome. Calls run in order. Main
  /// thread; does not wait.
  template <class F> void tell(F&& function) const { (void)hardware->call(std::forward<F>(function)); }

  /// As tell(), but returns the outcome; an exception becomes its failure. The awaiting coroutine resumes on
  /// the main thread.
  template <class F, class R = std::invoke_result_t<F&, HardwareController&>>
  QCoro::Task<CallOutcome<R>> ask(F function) const {
    return outcomeOf(hardware->call(std::move(function)), mainThread);
  }

  /// The awaiting coroutine resumes on `mainThread`.
  template <class R> static QCoro::Task<CallOutcome<R>> outcomeOf(Reply<R> reply, Executor& mainThread) {
    CallOutcome<R> outcome;
    auto awaited = std::move(reply).resumeOn(mainThread);
    try {
      if constexpr (std::is_void_v<R>) {
        co_await awaited;
        outcome.value.emplace();
      } else {
        outcome.value = co_await awaited;
      }
    } catch (const HardwareError& error) {
      outcome.failure = {.text = error.what(),
                         .status =
                             error.status() == kNoCallStatus ? std::nullopt : std::optional(error.status())};
    } catch (const std::exception& error) {
      outcome.failure = {.text = error.what(), .status = std::nullopt};
    }
    co_return outcome;
  }
};

} // namespace sonvel
